// Probabilities of cases counted by steps of their log odds.
#include "common/evaluation/ScoreCurves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "common/state/StateBytes.h"

using MCCommon::ScoreCurves;

namespace {

// The share of pairs of a case of the category and another one that the probabilities put right.
double AreaOf(const ScoreCurves& curves, int category) {
  double others = 0.0, pairs = 0.0, right = 0.0, of = 0.0;
  for (const ScoreCurves::Step& step : curves.StepsOf(category)) {
    right += step.fOf * (others + step.fOthers / 2.0);
    others += step.fOthers;
    of += step.fOf;
  }
  pairs = of * others;
  return right / pairs;
}

}  // namespace

// Of 3 cases of category 1 and 2 others, 5 of 6 pairs are in order; weights count as copies.
TEST(Curves, TellTheCategoriesApartAsTheirProbabilitiesDo) {
  ScoreCurves curves(2);
  const std::vector<std::pair<int, double>> cases = {
      {0, 0.1}, {1, 0.2}, {0, 0.3}, {1, 0.999999}, {1, 0.9999999}};
  for (const auto& [category, p] : cases) {
    const double both[] = {1.0 - p, p};
    curves.Count(category, both, 1.0);
  }
  EXPECT_EQ(curves.GetWeight(), 5.0);
  EXPECT_DOUBLE_EQ(AreaOf(curves, 1), 5.0 / 6.0);
  EXPECT_DOUBLE_EQ(AreaOf(curves, 0), 5.0 / 6.0);
  const double last[] = {0.5, 0.5};
  curves.Count(1, last, 2.0);  // above both of the others
  EXPECT_DOUBLE_EQ(AreaOf(curves, 1), 9.0 / 10.0);
}

TEST(Curves, KeepTheMeanProbabilityOfAStepAndTakeCertaintyForItsLastOne) {
  ScoreCurves curves(2);
  for (const double p : {0.0, 1.0, 1e-300, 0.6, 0.6}) {
    const double both[] = {1.0 - p, p};
    curves.Count(1, both, 1.0);
  }
  const auto steps = curves.StepsOf(1);
  EXPECT_EQ(steps.front().fOf, 2.0);
  EXPECT_EQ(steps.back().fOf, 1.0);
  const auto place = static_cast<std::size_t>(
      std::lround((std::log(0.6 / 0.4) + ScoreCurves::kRange) * ScoreCurves::kStepsPerUnit));
  EXPECT_EQ(steps[place].fOf, 2.0);
  EXPECT_DOUBLE_EQ(steps[place].fSum, 1.2);
}

TEST(Curves, OfPartsThatTravelAddUpToTheWhole) {
  ScoreCurves whole(2), parts(2);
  for (int part = 0; part < 3; ++part) {
    ScoreCurves counted(2);
    for (int i = 0; i < 20; ++i) {
      const double p = (7 * i + part) % 20 / 19.0;
      const double both[] = {1.0 - p, p};
      counted.Count(i % 2, both, 1.0 + part);
      whole.Count(i % 2, both, 1.0 + part);
    }
    ScoreCurves there(0);
    ASSERT_TRUE(StateBytes::To(StateBytes::Of(counted), there));
    parts.Add(there);
  }
  for (const int category : {0, 1}) {
    const auto expected = whole.StepsOf(category);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const ScoreCurves::Step& found = parts.StepsOf(category)[i];
      EXPECT_EQ(found.fOf, expected[i].fOf) << i;
      EXPECT_EQ(found.fOthers, expected[i].fOthers) << i;
      EXPECT_NEAR(found.fSum, expected[i].fSum, 1e-12) << i;
    }
  }
}

TEST(Curves, AreKeptOfTheFirstCategoriesOnly) {
  ScoreCurves curves(1000);
  EXPECT_EQ(curves.GetNCategories(), ScoreCurves::kMostCategories);
  curves.Count(999, std::vector<double>(1000, 0.001), 1.0);
  EXPECT_EQ(curves.GetWeight(), 1.0);
}
