// Which columns lack their values together, held against counting every case by hand; and what is
// said of more patterns than can be counted.
#include "operations/MissingPatterns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "common/Workers.h"
#include "host/data/ITable.h"
#include "host/data/KOVA_Variable.h"

namespace {

using PredSelect::MissingPatterns;

// "a", "b", ...: as many as have come so far.
class GrowingWords : public MCHost::StringDictionary {
 public:
  std::int32_t Size() const override { return static_cast<std::int32_t>(fWords.size()); }
  const std::string& At(std::int32_t code) const override {
    return fWords.at(static_cast<std::size_t>(code));
  }
  std::vector<std::string> fWords;
};

// Columns of numbers, and one of texts at their end; what stands for no value in each of them.
struct Cases {
  std::vector<KOVA_Variable> fVariables;
  std::vector<std::vector<double>> fNumbers;
  std::vector<std::int32_t> fCodes;

  explicit Cases(std::size_t nNumbers) : fNumbers(nNumbers) {
    for (std::size_t j = 0; j < nNumbers; ++j) {
      fVariables.emplace_back("x" + std::to_string(j), 0);
    }
    fVariables.emplace_back("t", 1);
  }

  MissingPatterns Count(std::size_t atOnce, int nThreads) const {
    std::vector<const KOVA_Variable*> variables;
    for (const KOVA_Variable& variable : fVariables) variables.push_back(&variable);
    MissingPatterns patterns(variables);
    MCCommon::Workers workers(nThreads);
    GrowingWords words;
    for (std::size_t from = 0; from < fCodes.size(); from += atOnce) {
      MCHost::TableBatch batch;
      batch.fNCases = std::min(atOnce, fCodes.size() - from);
      for (const auto& numbers : fNumbers) batch.fColumns.push_back({numbers.data() + from});
      batch.fColumns.push_back({nullptr, fCodes.data() + from, &words});
      for (std::size_t i = from; i < from + batch.fNCases; ++i) {
        while (words.Size() <= fCodes[i])
          words.fWords.push_back(std::string(1, 'a' + words.Size()));
      }
      patterns.Observe(batch, workers);
    }
    return patterns;
  }
};

Cases RandomCases(std::size_t nNumbers, std::size_t nCases, unsigned oneIn) {
  Cases cases(nNumbers);
  std::mt19937 random(7);
  for (std::size_t i = 0; i < nCases; ++i) {
    for (std::size_t j = 0; j < nNumbers; ++j) {
      const bool isGone = random() % (oneIn + j) == 0;
      const double gone[] = {KOVA_SystemMissing, std::nan(""), 99.0};
      cases.fNumbers[j].push_back(isGone ? gone[random() % 3] : static_cast<double>(i));
    }
    cases.fCodes.push_back(static_cast<std::int32_t>(random() % 6) - 1);
  }
  return cases;
}

TEST(MissingPatterns, CountsEveryCaseWhateverBatchesAndThreads) {
  Cases cases = RandomCases(4, 20000, 3);
  cases.fVariables[1].GetMissingValues().AddNumber(99.0);
  cases.fVariables[4].GetMissingValues().AddString("c");
  std::map<std::vector<int>, std::int64_t> expected;
  for (std::size_t i = 0; i < cases.fCodes.size(); ++i) {
    std::vector<int> missing;
    for (int j = 0; j < 4; ++j) {
      const double value = cases.fNumbers[static_cast<std::size_t>(j)][i];
      if (MCMV::IsMissing(value) || (j == 1 && value == 99.0)) missing.push_back(j);
    }
    if (cases.fCodes[i] == -1 || cases.fCodes[i] == 2) missing.push_back(4);
    ++expected[missing];
  }
  for (const std::size_t atOnce : {std::size_t{1}, std::size_t{999}, std::size_t{20000}}) {
    const MissingPatterns patterns = cases.Count(atOnce, atOnce == 999 ? 1 : 3);
    EXPECT_TRUE(patterns.IsExact());
    EXPECT_EQ(patterns.Count(), expected.size());
    std::int64_t last = 20000;
    for (const auto& pattern : patterns.MostFrequent(1000)) {
      EXPECT_EQ(pattern.fNCases, expected[pattern.fColumns]);
      EXPECT_EQ(pattern.fNMore, 0);
      EXPECT_LE(pattern.fNCases, last);
      last = pattern.fNCases;
    }
  }
}

TEST(MissingPatterns, SaysHowFarACountMayBeTooSmallWhereThereAreTooMany) {
  // Three in four cases have one of 2^20 patterns; the others lack nothing, or the first column.
  Cases cases = RandomCases(20, 100000, 2);
  for (std::size_t i = 0; i < cases.fCodes.size(); i += 4) {
    for (std::size_t j = 0; j < 20; ++j) cases.fNumbers[j][i] = j == 0 && i % 8 == 0 ? NAN : 1.0;
    cases.fCodes[i] = 0;
  }
  std::map<std::vector<int>, std::int64_t> expected;
  for (std::size_t i = 0; i < cases.fCodes.size(); ++i) {
    std::vector<int> missing;
    for (int j = 0; j < 20; ++j) {
      if (MCMV::IsMissing(cases.fNumbers[static_cast<std::size_t>(j)][i])) missing.push_back(j);
    }
    if (cases.fCodes[i] == -1) missing.push_back(20);
    ++expected[missing];
  }
  const MissingPatterns patterns = cases.Count(4096, 2);
  EXPECT_FALSE(patterns.IsExact());
  EXPECT_LE(patterns.Count(), MissingPatterns::kMostPatterns);
  const auto first = patterns.MostFrequent(20);
  EXPECT_EQ(first[0].fColumns, expected[{}] >= expected[{0}] ? std::vector<int>() : std::vector{0});
  for (const auto& pattern : first) {
    const std::int64_t all = expected[pattern.fColumns];
    EXPECT_LE(pattern.fNCases, all);
    EXPECT_GE(pattern.fNCases + pattern.fNMore, all);
  }
  for (const std::size_t exact : {std::size_t{0}, std::size_t{1}}) {
    EXPECT_EQ(first[exact].fNCases, expected[first[exact].fColumns]);
    EXPECT_EQ(first[exact].fNMore, 0);
  }
}

}  // namespace
