// An evaluation that is counted in parts, each of which travels as bytes, is that of all cases.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "common/evaluation/EvaluationCounter.h"
#include "common/state/StateBytes.h"

namespace {

using MCCommon::Evaluation;
using MCCommon::EvaluationCounter;
using MCCommon::Measure;

struct Case {
  std::size_t fObserved;
  double fProbability;
  double fWeight;
};

// With so many different probabilities.
std::vector<Case> Cases(int n, int distinct) {
  std::mt19937 random(7);
  std::vector<Case> cases;
  for (int i = 0; i < n; ++i) {
    const double p = (i % distinct + 0.5) / distinct;
    const bool isSecond = std::uniform_real_distribution<>()(random) < p;
    // The model does not know the third class.
    cases.push_back({i % 50 == 0 ? 2U : isSecond ? 1U : 0U, p, 1.0 + i % 3});
  }
  return cases;
}

void Count(const std::vector<Case>& cases, std::size_t first, std::size_t step,
           EvaluationCounter& counter) {
  for (std::size_t i = first; i < cases.size(); i += step) {
    const double p = cases[i].fProbability;
    const std::vector<double> probabilities = {1.0 - p, p};
    counter.Add(cases[i].fObserved, p > 0.5 ? 1 : 0, probabilities, cases[i].fWeight);
  }
}

EvaluationCounter Shipped(const EvaluationCounter& counter) {
  EvaluationCounter there;
  EXPECT_TRUE(StateBytes::To(StateBytes::Of(counter), there));
  return there;
}

Evaluation InParts(const std::vector<Case>& cases, bool backwards) {
  constexpr std::size_t kParts = 5;
  EvaluationCounter all(2);
  for (std::size_t i = 0; i < kParts; ++i) {
    EvaluationCounter part(2);
    Count(cases, backwards ? kParts - 1 - i : i, kParts, part);
    part.Settle();
    all.Add(Shipped(part));
  }
  return Shipped(all).Find({0.5, 0.5});
}

}  // namespace

TEST(EvaluationParts, AddUpToTheWholeWhetherProbabilitiesAreRoundedOrNot) {
  constexpr int kMost = static_cast<int>(EvaluationCounter::kScores / 2);
  for (const int distinct : {100, kMost, kMost + 1, kMost + kMost / 2}) {
    const std::vector<Case> cases = Cases(kMost + kMost / 2 + 5, distinct);
    EvaluationCounter counter(2);
    Count(cases, 0, 1, counter);
    const Evaluation whole = counter.Find({0.5, 0.5});
    EXPECT_EQ(whole.fbAUCRounded, distinct > kMost);
    for (const bool backwards : {false, true}) {
      const Evaluation found = InParts(cases, backwards);
      EXPECT_EQ(found.fNRows, whole.fNRows);
      EXPECT_EQ(found.fConfusions, whole.fConfusions);
      EXPECT_EQ(found.fbAUCRounded, whole.fbAUCRounded);
      for (std::size_t m = 0; m < MCCommon::kNMeasures; ++m) {
        EXPECT_NEAR(found.fMeasures[m].fValue, whole.fMeasures[m].fValue, 1e-13) << m;
        EXPECT_NEAR(found.fMeasures[m].fLow, whole.fMeasures[m].fLow, 1e-12) << m;
      }
      // Weights are whole numbers, so that areas are the same to the last bit.
      EXPECT_EQ(found.fClasses[1].fAUC.fValue, whole.fClasses[1].fAUC.fValue);
      EXPECT_EQ(found.fClasses[1].fAUC.fLow, whole.fClasses[1].fAUC.fLow);
      EXPECT_EQ(found.fCalibration.size(), whole.fCalibration.size());
    }
  }
}
