#include "common/evaluation/Repeated.h"

#include <gtest/gtest.h>

namespace {

using MCCommon::RepeatedMeasure;

constexpr double kNone = MCMV::gMissingValue;

// Of t with 1 degree of freedom, 12.706, and with 2, 4.303, from published tables.
TEST(Repeated, AnIntervalNeedsValuesThatDiffer) {
  const struct {
    std::vector<double> fValues;
    double fMean, fDeviation, fHalf;  // of the interval; below 0: there is none
  } cases[] = {
      {{0.5, 0.5}, 0.5, 0.0, -1},
      {{0.1, 0.1, 0.1}, 0.1, 0.0, -1},  // whose mean is none of them, by rounding
      {{kNone, 1.0, kNone, 1.0}, 1.0, 0.0, -1},
      {{0.7}, 0.7, kNone, -1},
      {{kNone, kNone}, kNone, kNone, -1},
      {{0.5, 0.7}, 0.6, 0.141421356, 12.706 * 0.141421356},
      {{0.5, kNone, 0.7, 0.6}, 0.6, 0.1, 4.303 * 0.1 * 0.912870929},
  };
  for (const auto& tried : cases) {
    const RepeatedMeasure found = MCCommon::Summarize(tried.fValues, 0.5);
    EXPECT_DOUBLE_EQ(found.fMean.fValue, tried.fMean);
    EXPECT_NEAR(found.fDeviation, tried.fDeviation, 1e-9);
    EXPECT_EQ(MCMV::IsMissing(found.fMean.fLow), tried.fHalf < 0);
    EXPECT_EQ(MCMV::IsMissing(found.fMean.fHigh), tried.fHalf < 0);
    if (tried.fHalf < 0) continue;
    EXPECT_NEAR(found.fMean.fHigh - tried.fMean, tried.fHalf, 1e-4);
    EXPECT_NEAR(tried.fMean - found.fMean.fLow, tried.fHalf, 1e-4);
  }
}

// Made once with numpy by the estimator and the variance of Nogueira, Sechidis and Brown (2018).
TEST(Repeated, StabilityAndItsIntervalAreThePublishedOnes) {
  const struct {
    std::vector<std::vector<int>> fSelected;
    int fCandidates;
    double fStability, fHalf;
  } cases[] = {
      {{{0, 1, 2}, {0, 1, 3}, {0, 1, 2}, {0, 1}, {0, 1, 2, 4}, {0, 1, 2}},
       9,
       0.7,
       0.149892600081881},
      {{{0, 1}, {0, 2}, {0, 1, 3}, {0}, {1, 2}}, 4, 0.0, 0.2479180129218246},
      {{{0}, {}}, 1, -1.0, -1},
  };
  for (const auto& tried : cases) {
    const auto found = MCCommon::StabilityOf(tried.fSelected, tried.fCandidates);
    EXPECT_NEAR(found.fValue, tried.fStability, 1e-14);
    EXPECT_EQ(MCMV::IsMissing(found.fLow), tried.fHalf < 0);
    if (tried.fHalf < 0) continue;
    EXPECT_NEAR(found.fHigh, tried.fStability + tried.fHalf, 1e-14);
    EXPECT_NEAR(found.fLow, tried.fStability - tried.fHalf, 1e-14);
  }
}

// None or all in every fold leave nothing to tell, however the shares round.
TEST(Repeated, StabilityNeedsAChoice) {
  const std::vector<int> all = {0, 1};
  for (const std::size_t folds : {2U, 3U, 10U, 49U, 1000U}) {
    for (const std::vector<int>& selected : {std::vector<int>(), all}) {
      const auto found = MCCommon::StabilityOf({folds, selected}, 2);
      EXPECT_TRUE(MCMV::IsMissing(found.fValue) && MCMV::IsMissing(found.fLow)) << folds;
    }
    std::vector<std::vector<int>> same(folds, {1});
    EXPECT_NEAR(MCCommon::StabilityOf(same, 2).fValue, 1.0, 1e-12);
  }
}

}  // namespace
