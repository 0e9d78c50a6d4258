// Effect sizes, their intervals and adjusted p-values, through the component where it counts,
// against scipy, statsmodels and published values.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/distributions/FSNoncentral.h"
#include "feature/statistics/FSAdjust.h"
#include "feature/statistics/FSEffects.h"
#include "tests/feature/Tables.h"

namespace {

using Numbers = std::vector<double>;

constexpr double kMissing = MCMV::gMissingValue;

// Column 0 is the target.
FSEffect EffectOf(const Table& table, bool catPredictor, bool catTarget,
                  MCFSCommon::RankCriteria ranking = MCFSCommon::kPearson) {
  FSSettings settings(std::vector<bool>{catPredictor}, catTarget);
  const auto component = FSFactory().CreateFSAlgorithm(&settings);
  BlocksOf source(table, 50);
  (void)component->AccumulateAndRank(source, -1, false, 0);
  return component->GetPredictorEffect(ranking, 0);
}

Table TableOf(const Numbers& counts, std::size_t columns) {
  Table table(2);
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const auto n = static_cast<std::size_t>(counts[i]);
    table[0].insert(table[0].end(), n, static_cast<double>(i % columns));
    table[1].insert(table[1].end(), n, static_cast<double>(i / columns));
  }
  return table;
}

// Arguments: sizes of groups, 0, their values.
Table GroupsOf(const Numbers& arguments) {
  Table table(2);
  std::size_t at = 0;
  for (; arguments[at] > 0.0; ++at) {
    table[0].insert(table[0].end(), static_cast<std::size_t>(arguments[at]),
                    static_cast<double>(at));
  }
  table[1].assign(arguments.begin() + static_cast<std::ptrdiff_t>(at) + 1, arguments.end());
  return table;
}

Numbers Logs(Numbers values) {
  for (double& value : values) value = std::log(value);
  return values;
}

Numbers Exps(Numbers values) {
  for (double& value : values) value = std::exp(value);
  return values;
}

Numbers TableValues(const Numbers& arguments) {
  const Numbers counts(arguments.begin() + 2, arguments.end());
  const FSEffect e = EffectOf(TableOf(counts, static_cast<std::size_t>(arguments[1])), true, true);
  const FSInterval interval = FSEffects::IntervalOf(e, 0.95);
  return {e.fStatistic,  e.fDf1,         e.fLogP,        e.fSize,
          interval.fLow, interval.fHigh, e.fInformation, e.fbFewExpected ? 1.0 : 0.0};
}

Numbers GroupValues(const Numbers& arguments) {
  const Table table = GroupsOf(arguments);
  const FSEffect e = EffectOf(table, false, true);
  // The same groups the other way round, as categories of the predictor.
  EXPECT_DOUBLE_EQ(EffectOf({table[1], table[0]}, true, false).fStatistic, e.fStatistic);
  const FSInterval interval = FSEffects::IntervalOf(e, 0.95);
  return {e.fStatistic, e.fDf1,          e.fDf2,        e.fLogP,
          e.fSize,      e.fOmegaSquared, interval.fLow, interval.fHigh};
}

Numbers PairValues(const Numbers& arguments) {
  const auto half = arguments.begin() + static_cast<std::ptrdiff_t>(arguments.size() / 2);
  const FSEffect e =
      EffectOf({Numbers(half, arguments.end()), Numbers(arguments.begin(), half)}, false, false);
  const FSInterval interval = FSEffects::IntervalOf(e, 0.95);
  return {e.fStatistic, e.fDf1, e.fLogP, e.fSize, interval.fLow, interval.fHigh};
}

Numbers Evaluate(const std::string& function, const Numbers& a) {
  if (function == "cdf_chi") return {FSNoncentral::CdfChi(a[0], a[1], a[2])};
  if (function == "cdf_f") return {FSNoncentral::CdfF(a[0], a[1], a[2], a[3])};
  if (function == "lambda_chi") return {FSNoncentral::LambdaOfChi(a[0], a[1], a[2])};
  if (function == "lambda_f") return {FSNoncentral::LambdaOfF(a[0], a[1], a[2], a[3])};
  if (function == "bh") return Exps(FSAdjust::BenjaminiHochberg(Logs(a)));
  if (function == "holm") return Exps(FSAdjust::Holm(Logs(a)));
  if (function == "table") return TableValues(a);
  return function == "groups" ? GroupValues(a) : PairValues(a);
}

Numbers ReadNumbers(std::istringstream& line) {
  std::string field;
  std::getline(line, field, ';');
  std::istringstream fields(field);
  Numbers numbers;
  for (double number = 0.0; fields >> number;) numbers.push_back(number);
  return numbers;
}

// Made by make_effect_reference.py, which says where the values come from.
TEST(Effects, AgreeWithIndependentSoftware) {
  std::ifstream file(PREDSELECT_SOURCE_DIR "/tests/feature/effect_reference.csv");
  int nLines = 0;
  for (std::string text; std::getline(file, text); ++nLines) {
    std::istringstream line(text);
    std::string function;
    std::getline(line, function, ';');
    const Numbers arguments = ReadNumbers(line);
    const Numbers expected = ReadNumbers(line);
    const Numbers values = Evaluate(function, arguments);
    ASSERT_EQ(values.size(), expected.size()) << text;
    for (std::size_t i = 0; i < values.size(); ++i) {
      // Beside the relative error: correlations, intervals near zero, tails below any use.
      EXPECT_NEAR(values[i], expected[i], 1e-10 * std::fabs(expected[i]) + 1e-12) << text << i;
    }
  }
  EXPECT_GT(nLines, 50);
}

TEST(Effects, AgreeWithPublishedValues) {
  // Pearson correlation of R's cor.test (its page; Hollander and Wolfe (1973), p. 187): lightness
  // of tuna and panel scores.
  const Numbers tuna = PairValues({44.4, 45.9, 41.9, 53.3, 44.7, 44.1, 50.7, 45.2, 60.1, 2.6, 3.1,
                                   2.5, 5.0, 3.6, 4.0, 5.2, 2.8, 3.8});
  EXPECT_NEAR(tuna[0], 1.8411, 5e-5);
  EXPECT_NEAR(std::exp(tuna[2]), 0.1082, 5e-5);
  EXPECT_NEAR(tuna[3], 0.5711816, 5e-8);
  EXPECT_NEAR(tuna[4], -0.1497426, 5e-8);
  EXPECT_NEAR(tuna[5], 0.8955795, 5e-8);
  // Certified one-way analysis of variance of the NIST Statistical Reference Datasets, SiRstv.
  const Numbers resistivity =
      GroupValues({5,        5,        5,        5,        5,        0,        196.3052, 196.1240,
                   196.1890, 196.2569, 196.3403, 196.3042, 196.3825, 196.1669, 196.3257, 196.0422,
                   196.1303, 196.2005, 196.2889, 196.0343, 196.1811, 196.2795, 196.1748, 196.1494,
                   196.1485, 195.9885, 196.2119, 196.1051, 196.1850, 196.0052, 196.2090});
  EXPECT_NEAR(resistivity[0], 1.18046237440255, 1e-8);
  EXPECT_NEAR(resistivity[4], 1.90999039051129e-1, 1e-9);
  // Preferences for music, on the page of the function effectsize of R's package of that name: V
  // corrected for bias; Cohen's w with a one-sided bound of 95 percent, which is that of V over
  // sqrt(3 - 1). And cylinders by transmission of the data set mtcars.
  const Numbers music = {150, 100, 165, 130, 50, 65, 35, 10, 2, 55, 40, 25};
  const FSEffect preferences = EffectOf(TableOf(music, 4), true, true);
  EXPECT_NEAR(preferences.fSize, 0.23, 5e-3);
  EXPECT_NEAR(FSEffects::IntervalOf(preferences, 0.90).fLow * std::sqrt(2.0), 0.27, 5e-3);
  EXPECT_NEAR(EffectOf(TableOf({3, 8, 4, 3, 12, 2}, 2), true, true).fSize, 0.46, 5e-3);
}

// The example of Benjamini and Hochberg (1995): at 5 percent four discoveries, three by Bonferroni,
// and so by Holm.
TEST(Effects, AdjustThePublishedExampleAsItWas) {
  const Numbers logP = Logs({0.0001, 0.0004, 0.0019, 0.0095, 0.0201, 0.0278, 0.0298, 0.0344, 0.0459,
                             0.3240, 0.4262, 0.5719, 0.6528, 0.7590, 1.0000});
  const auto discoveries = [](const Numbers& adjusted) {
    return std::count_if(adjusted.begin(), adjusted.end(),
                         [](double p) { return std::exp(p) <= 0.05; });
  };
  EXPECT_EQ(discoveries(FSAdjust::BenjaminiHochberg(logP)), 4);
  EXPECT_EQ(discoveries(FSAdjust::Holm(logP)), 3);
}

TEST(Effects, AdjustFarBelowTheSmallestDoubleAndPassOverWhatIsMissing) {
  const double zero = -std::numeric_limits<double>::infinity();
  const Numbers logP = {-4000.0, kMissing, zero, -5000.0};
  const Numbers adjusted = FSAdjust::BenjaminiHochberg(logP);
  EXPECT_DOUBLE_EQ(adjusted[0], -4000.0);
  EXPECT_EQ(adjusted[1], kMissing);
  EXPECT_EQ(adjusted[2], zero);
  EXPECT_DOUBLE_EQ(adjusted[3], -5000.0 + std::log(1.5));
  EXPECT_THAT(FSAdjust::Holm({}), testing::IsEmpty());
}

TEST(Effects, OfThePerfectTheConstantAndTheFewHaveNoInterval) {
  const double infinity = std::numeric_limits<double>::infinity();
  const FSEffect separated = EffectOf({{0, 0, 1, 1}, {5, 5, 7, 7}}, false, true);
  EXPECT_EQ(separated.fSize, 1.0);
  EXPECT_EQ(separated.fOmegaSquared, 1.0);
  EXPECT_EQ(separated.fLogP, -infinity);
  EXPECT_EQ(separated.fStatistic, kMissing);
  for (const double slope : {2.0, -2.0}) {
    const FSEffect line =
        EffectOf({{1, 2, 3, 4}, {slope, 2 * slope, 3 * slope, 4 * slope}}, false, false);
    EXPECT_EQ(line.fSize, slope / 2.0);
    EXPECT_EQ(line.fLogP, -infinity);
    EXPECT_EQ(line.fStatistic, kMissing);
    EXPECT_EQ(FSEffects::IntervalOf(line, 0.95).fHigh, kMissing);
  }
  // A straight line whose values are so large that they are rounded.
  Table rounded(2);
  for (int i = 0; i < 20; ++i) {
    rounded[0].push_back(1e11 + i);
    rounded[1].push_back(rounded[0].back() / 3.0);
  }
  EXPECT_EQ(EffectOf(rounded, false, false).fLogP, -infinity);
  const FSEffect few = EffectOf({{1, 2, 4}, {1, 3, 3.5}}, false, false);
  EXPECT_NE(few.fSize, kMissing);
  for (const FSEffect& effect : {separated, few, FSEffect()}) {
    EXPECT_EQ(FSEffects::IntervalOf(effect, 0.95).fLow, kMissing);
  }
  EXPECT_TRUE(EffectOf({{0, 1, 2}, {1, 1, 1}}, true, true).fTest == FSEffect::kNone) << "removed";
  for (const bool catPredictor : {true, false}) {
    const FSEffect constant = EffectOf({{5, 5, 5, 5}, {0, 1, 2, 1}}, catPredictor, false);
    EXPECT_EQ(constant.fSize, kMissing) << "the target is constant";
    EXPECT_EQ(constant.fLogP, kMissing);
  }
  EXPECT_EQ(EffectOf({{1, 2, 3}, {0, 1, 2}}, true, false).fStatistic, kMissing) << "a case a group";
}

TEST(Effects, OfTheLikelihoodRatioWhereThatRanks) {
  const Table table = TableOf({12, 3, 4, 15}, 2);
  const FSEffect g = EffectOf(table, true, true, MCFSCommon::kLikelihood);
  const FSEffect x = EffectOf(table, true, true, MCFSCommon::kCramer);
  EXPECT_EQ(g.fTest, FSEffect::kLikelihoodRatio);
  EXPECT_NEAR(g.fStatistic, 2.0 * std::log(2.0) * 34.0 * g.fInformation, 1e-12);
  EXPECT_NE(g.fLogP, x.fLogP);
  EXPECT_EQ(g.fSize, x.fSize);
}

// More than a fifth below 5, or one below 1; a fifth exactly is allowed.
TEST(Effects, SmallExpectedCountsFollowCochransRule) {
  EXPECT_FALSE(EffectOf(TableOf({5, 20, 5, 20}, 2), true, true).fbFewExpected);
  EXPECT_TRUE(EffectOf(TableOf({4, 20, 5, 20}, 2), true, true).fbFewExpected);
  // Five rows, two columns: expected 4 and 4 in one of the rows, which is a fifth of the cells.
  const Numbers fifth = {20, 20, 20, 20, 20, 20, 20, 20, 4, 4};
  EXPECT_FALSE(EffectOf(TableOf(fifth, 2), true, true).fbFewExpected);
  Numbers one = fifth;
  one[8] = 1;
  one[9] = 0;
  EXPECT_TRUE(EffectOf(TableOf(one, 2), true, true).fbFewExpected);
}

TEST(Effects, NoncentralFunctionsHoldAtTheEndsOfTheirDomain) {
  EXPECT_EQ(FSNoncentral::CdfChi(-1.0, 3.0, 2.0), 0.0);
  EXPECT_EQ(FSNoncentral::CdfF(0.0, 3.0, 3.0, 2.0), 0.0);
  for (const double bad : {-1.0, 2.0 * FSNoncentral::kMostLambda, std::nan("")}) {
    EXPECT_EQ(FSNoncentral::CdfChi(1.0, 3.0, bad), kMissing);
    EXPECT_EQ(FSNoncentral::CdfF(1.0, 3.0, 3.0, bad), kMissing);
  }
  EXPECT_EQ(FSNoncentral::CdfF(1.0, 3.0, 0.0, 1.0), kMissing);
  for (const double df : {0.0, kMissing}) {
    EXPECT_EQ(FSNoncentral::CdfChi(1.0, df, 1.0), kMissing);
    EXPECT_EQ(FSNoncentral::CdfF(1.0, 3.0, df, 1.0), kMissing);
  }
  EXPECT_EQ(FSNoncentral::LambdaOfChi(kMissing, 3.0, 0.5), kMissing);
  EXPECT_EQ(FSNoncentral::LambdaOfChi(1e11, 3.0, 0.5), kMissing) << "beyond the most lambda";
  // A million cases: normal with mean df + lambda and variance 2 df + 4 lambda, nearly.
  const double lambda = FSNoncentral::LambdaOfChi(5e5, 4.0, 0.025);
  EXPECT_NEAR((lambda + 4.0 - 5e5) / std::sqrt(8.0 + 4.0 * lambda), 1.96, 5e-3);
  // Near the most lambda: the square of a normal variable.
  EXPECT_NEAR(std::sqrt(FSNoncentral::LambdaOfChi(4e9, 1.0, 0.025)) - std::sqrt(4e9), 1.96, 1e-3);
}

}  // namespace
