// What tells leaks against its definition: the gain on other cases with each case left out in turn,
// the table and the priors of the rest made anew; the other traits by one case after the other.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBLeaks.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using Table = std::vector<std::vector<double>>;

// ln of the probability of target k in category m by the table without one case of (m,k), with the
// priors and the smoothing of the whole table.
double LogPosterior(const Table& table, std::size_t m, std::size_t k) {
  double total = 0;
  std::vector<double> targets(table[0].size(), 0.0);
  int nonEmpty = 0;
  for (const auto& row : table) {
    double inRow = 0;
    for (std::size_t j = 0; j < row.size(); ++j) {
      targets[j] += row[j];
      inRow += row[j];
    }
    total += inRow;
    nonEmpty += inRow > 0;
  }
  double own = 0;
  double all = 0;
  for (std::size_t j = 0; j < targets.size(); ++j) {
    const double left = j == k ? 1 : 0;
    const double score = targets[j] / total * (table[m][j] - left + 1 / total) /
                         (targets[j] - left + nonEmpty / total);
    all += score;
    if (j == k) own = score;
  }
  return std::log(own / all) - std::log(targets[k] / total);
}

TEST(NBLeaks, GainOnOthersIsThatOfEachCaseLeftOut) {
  std::mt19937 random(7);
  for (const int categories : {2, 5, 60}) {
    Table table(static_cast<std::size_t>(categories), std::vector<double>(3, 0.0));
    for (int i = 0; i < 200; ++i) {
      const std::size_t m = random() % table.size();
      ++table[m][random() % 3 == 0 ? random() % 3 : m % 3];
    }
    double expected = 0;
    for (std::size_t m = 0; m < table.size(); ++m) {
      for (std::size_t k = 0; k < 3; ++k) {
        if (table[m][k] > 0) expected += table[m][k] * LogPosterior(table, m, k) / 200;
      }
    }
    NBayesInputBase counts;
    counts.Setup(1.0 / 200, table);
    EXPECT_NEAR(NBLeaks::GainOnOthers(counts, 1.0), expected, 1e-12) << categories;
  }
}

TEST(NBLeaks, CategoriesOfNoiseMisleadAndOfKnowledgeDoNot) {
  Table noise(100, std::vector<double>(2, 0.0));
  Table known = noise;
  std::mt19937 random(3);
  for (std::size_t m = 0; m < noise.size(); ++m) {
    for (int i = 0; i < 5; ++i) ++noise[m][random() % 2];
    known[m][m % 2] = 5;
  }
  NBayesInputBase counts;
  counts.Setup(1.0 / 500, noise);
  EXPECT_LT(NBLeaks::GainOnOthers(counts, 1.0), -0.1);
  counts.Setup(1.0 / 500, known);
  EXPECT_GT(NBLeaks::GainOnOthers(counts, 1.0), 0.6) << "nearly ln 2, all that there is to know";
}

// Over RandomData, with one predictor that tells the target: cases in units of the mean weight,
// used categories, and the variance of bins that are spread evenly.
TEST(NBLeaks, TraitsOfAModelAreThoseOfItsCases) {
  using nbtest::RandomData;
  using nbtest::Reference;
  constexpr int kTelling = 1, kBinned = 5;
  std::vector<MCCommon::Record> records = RandomData::Make(200, 4);
  for (auto& record : records) record[RandomData::kFirst + kTelling] = record[RandomData::kTarget];
  NBAlgorithm model(NaiveBayesSettings(), RandomData::MakeList({0, 1, 2, 3, 4, 5}));
  nbtest::TestRecords source(records);
  ASSERT_FALSE(model.BuildModel(source, 200).IsError());
  const auto nValid = static_cast<double>(std::ranges::count_if(records, Reference::IsValid));
  const double unit = model.GetTotalWeight() / nValid;
  ASSERT_EQ(model.GetLeakTraits().size(), 6u);
  for (int j = 0; j < RandomData::kInputs; ++j) {
    double weight = 0, sum = 0, squares = 0;
    std::set<int> codes;
    for (const auto& record : records) {
      const int code = Reference::Code(record, j);
      if (!Reference::IsValid(record) || code < 0) continue;
      const double middle = 2.0 * code + 1;
      weight += record[RandomData::kWeight];
      sum += record[RandomData::kWeight] * middle;
      squares += record[RandomData::kWeight] * middle * middle;
      codes.insert(code);
    }
    const MCCommon::LeakTraits& traits = model.GetLeakTraits()[static_cast<std::size_t>(j)].fTraits;
    EXPECT_NEAR(traits.fCases, weight / unit, 1e-9) << j;
    EXPECT_EQ(traits.fbDetermines, j == kTelling) << j;
    EXPECT_EQ(traits.fCategories, j == kBinned ? 0.0 : static_cast<double>(codes.size())) << j;
    const double mean = sum / weight;
    const double variance = squares / weight - mean * mean + 2.0 * 2.0 / 12.0;
    EXPECT_NEAR(traits.fVariance, j == kBinned ? variance : 0.0, 1e-9) << j;
  }
}

}  // namespace
