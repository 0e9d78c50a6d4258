// Records for tests of the Naive Bayes component: a stream of them, a random data set, and the
// plainest possible recomputation of everything that a selection reports.
#pragma once

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "common/RecordIterator.h"
#include "naivebayes/variables/NBVarList.h"

namespace nbtest {

class TestRecords : public MCCommon::MultiPassRecordIter {
 public:
  explicit TestRecords(std::vector<MCCommon::Record> records) : fvRecords(std::move(records)) {}
  bool HasMore() override { return fNext < fvRecords.size() && fNext != fFailAt; }
  const MCCommon::Record* NextRecord() override {
    return HasMore() ? &fvRecords[fNext++] : nullptr;
  }
  FailReason GetFailReason() const override {
    if (fNext == fFailAt) return kReadError;
    return fNext < fvRecords.size() ? kSuccess : kNoRecords;
  }
  bool NewPass() override {
    fNext = 0;
    return true;
  }
  const std::vector<MCCommon::Record>& All() const { return fvRecords; }

  std::size_t fFailAt = static_cast<std::size_t>(-1);

 private:
  std::vector<MCCommon::Record> fvRecords;
  std::size_t fNext = 0;
};

// Target with 3 categories, weight, categorical inputs with 2, 3, 4, 2, 5 categories, one
// continuous input on [0, 10] in 5 bins; about one value in ten is missing, and some weights are
// zero.
struct RandomData {
  static constexpr int kTarget = 0, kWeight = 1, kFirst = 2, kInputs = 6, kClasses = 3;

  static NBVarList MakeList(const std::vector<int>& forced = {}, int classes = kClasses) {
    NBVarList list;
    list.AddCatVar("y", "", classes, INBVariable::kNumericCategorical, INBVariable::kOutput);
    list.AddWeightVar("w", "", INBVariable::kAsIs);
    std::string name = "x";
    for (int cats : {2, 3, 4, 2, 5}) {
      list.AddCatVar(name += 'x', "", cats, INBVariable::kNumericCategorical,
                     INBVariable::kPossibleInput);
    }
    list.AddContVar("c", "", 0, 10, 5, INBVariable::kPossibleInput);
    for (int j : forced) list.SetVariableRole(kFirst + j, INBVariable::kInput);
    return list;
  }

  static std::vector<MCCommon::Record> Make(int n, unsigned seed) {
    std::mt19937 random(seed);
    const auto uniform = [&] { return random() * 0x1p-32; };
    std::vector<MCCommon::Record> records;
    for (int i = 0; i < n; ++i) {
      MCCommon::Record r(kFirst + kInputs);
      const int y = static_cast<int>(uniform() * kClasses);
      r[kTarget] = uniform() < 0.05 ? MCMV::gMissingValue : y;
      r[kWeight] = uniform() < 0.05 ? 0.0 : std::floor(uniform() * 4 + 1) / 2;
      const int cats[] = {2, 3, 4, 2, 5};
      for (int j = 0; j < 5; ++j) {
        const bool tied = uniform() < 0.15 * j;
        r[kFirst + j] = tied ? (y + j) % cats[j] : std::floor(uniform() * cats[j]);
        if (uniform() < 0.1) r[kFirst + j] = uniform() < 0.5 ? -1 : MCMV::gMissingValue;
      }
      r[kFirst + 5] = uniform() < 0.1 ? std::nan("") : uniform() * 7 + y * 1.5;
      records.push_back(r);
    }
    return records;
  }
};

// The model of RandomData by its definition, one record at a time.
class Reference {
 public:
  explicit Reference(const std::vector<MCCommon::Record>& records) {
    const int cats[] = {2, 3, 4, 2, 5, 5};
    std::vector<double> targets(RandomData::kClasses, 0.0);
    for (const auto& r : records) {
      if (!IsValid(r)) continue;
      fN += r[1];
      targets[Class(r)] += r[1];
    }
    for (double t : targets) fvPriors.push_back((t + 1 / fN) / (fN + 3 / fN));
    for (int j = 0; j < RandomData::kInputs; ++j) {
      std::vector<std::vector<double>> n(cats[j], std::vector<double>(3, 0.0));
      std::vector<double> total(3, 0.0), rows(cats[j], 0.0);
      for (const auto& r : records) {
        const int m = Code(r, j);
        if (!IsValid(r) || m < 0) continue;
        n[m][Class(r)] += r[1];
        total[Class(r)] += r[1];
        rows[m] += r[1];
      }
      int used = 0;
      for (double row : rows) used += row > 0;
      for (auto& row : n) {
        for (int k = 0; k < 3; ++k) row[k] = (1 / fN + row[k]) / (used / fN + total[k]);
      }
      fvP.push_back(n);
    }
  }

  static bool IsValid(const MCCommon::Record& r) { return r[1] > 0 && r[0] >= 0; }
  static int Class(const MCCommon::Record& r) { return static_cast<int>(r[0]); }
  static int Code(const MCCommon::Record& r, int j) {
    const double value = r[RandomData::kFirst + j];
    if (!(value >= 0)) return -1;
    return j < 5 ? static_cast<int>(value)
                 : std::max(static_cast<int>(std::ceil(value / 2)) - 1, 0);
  }

  double Joint(const MCCommon::Record& r, const std::vector<int>& subset, int k) const {
    double product = fvPriors[k];
    for (int j : subset) {
      if (Code(r, j) >= 0) product *= fvP[j][Code(r, j)][k];
    }
    return product;
  }
  double Posterior(const MCCommon::Record& r, const std::vector<int>& subset, int k) const {
    double sum = 0;
    for (int c = 0; c < 3; ++c) sum += Joint(r, subset, c);
    return Joint(r, subset, k) / sum;
  }
  // The average of log P(class | record) over the valid records.
  double LogLikelihood(const std::vector<MCCommon::Record>& records,
                       const std::vector<int>& subset) const {
    double sum = 0, weight = 0;
    for (const auto& r : records) {
      if (!IsValid(r)) continue;
      sum += r[1] * std::log(Posterior(r, subset, Class(r)));
      weight += r[1];
    }
    return sum / weight;
  }
  // Forced inputs, then the best candidate at each step.
  std::vector<int> Forward(const std::vector<MCCommon::Record>& records, std::vector<int> order,
                           int size) const {
    while (static_cast<int>(order.size()) < size) {
      int best = -1;
      double bestValue = 0;
      for (int j = 0; j < RandomData::kInputs; ++j) {
        if (std::find(order.begin(), order.end(), j) != order.end()) continue;
        std::vector<int> subset = order;
        subset.push_back(j);
        const double value = LogLikelihood(records, subset);
        if (best < 0 || value > bestValue) {
          best = j;
          bestValue = value;
        }
      }
      order.push_back(best);
    }
    return order;
  }

  double fN = 0;
  std::vector<double> fvPriors;
  std::vector<std::vector<std::vector<double>>> fvP;
};

}  // namespace nbtest
