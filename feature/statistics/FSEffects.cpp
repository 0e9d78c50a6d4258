#include "feature/statistics/FSEffects.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "feature/distributions/FSDistFun.h"
#include "feature/distributions/FSNoncentral.h"
#include "feature/statistics/FSSignificance.h"

using FSStatistics::Anova;
using FSStatistics::ContingencyTable;

namespace FSEffects {

namespace {

constexpr double kMissing = MCMV::gMissingValue;
constexpr double kLogTwo = 0.6931471805599453;

// What a category's number of rows or columns comes to without the bias.
double Corrected(std::size_t categories, double total) {
  const auto n = static_cast<double>(categories);
  return n - (n - 1.0) * (n - 1.0) / (total - 1.0);
}

template <class LambdaOf, class SizeOf>
FSInterval FromNoncentrality(LambdaOf lambdaOf, double confidence, SizeOf sizeOf) {
  const double low = lambdaOf(0.5 + confidence / 2.0);
  const double high = lambdaOf(0.5 - confidence / 2.0);
  if (MCMV::IsMissing(low) || MCMV::IsMissing(high)) return {};
  return {sizeOf(low), sizeOf(high)};
}

FSInterval IntervalOfV(const FSEffect& effect, double confidence) {
  return FromNoncentrality(
      [&](double p) { return FSNoncentral::LambdaOfChi(effect.fChiSquare, effect.fDf1, p); },
      confidence,
      [&](double lambda) {
        return std::min(std::sqrt(lambda / (effect.fTotal * effect.fDimension)), 1.0);
      });
}

FSInterval IntervalOfEtaSquared(const FSEffect& effect, double confidence) {
  return FromNoncentrality(
      [&](double p) {
        return FSNoncentral::LambdaOfF(effect.fStatistic, effect.fDf1, effect.fDf2, p);
      },
      confidence, [&](double lambda) { return lambda / (lambda + effect.fTotal); });
}

FSInterval IntervalOfR(const FSEffect& effect, double confidence) {
  if (!(effect.fTotal > 3.0)) return {};
  const double z = std::atanh(effect.fSize);
  const double distance =
      FSDistFun::IdfNorm(0.5 + confidence / 2.0, 0.0, 1.0) / std::sqrt(effect.fTotal - 3.0);
  return {std::tanh(z - distance), std::tanh(z + distance)};
}

}  // namespace

FSEffect OfTable(const ContingencyTable& table, MCFSCommon::RankCriteria ranking) {
  const bool byLikelihood = ranking == MCFSCommon::kLikelihood;
  FSEffect effect;
  effect.fTest = byLikelihood ? FSEffect::kLikelihoodRatio : FSEffect::kPearson;
  effect.fTotal = table.fTotal;
  if (table.IsDegenerate()) {
    effect.fStatistic = effect.fDf1 = effect.fInformation = 0.0;
    return effect;
  }
  effect.fChiSquare = FSStatistics::PearsonChiSquare(table);
  effect.fStatistic =
      byLikelihood ? FSStatistics::LikelihoodRatioChiSquare(table) : effect.fChiSquare;
  effect.fDf1 = table.DegreesOfFreedom();
  effect.fLogP = FSSignificance{FSSignificance::kChiSquare, effect.fStatistic, effect.fDf1}.LogP();
  effect.fDimension =
      static_cast<double>(std::min(table.fRows.size(), table.fColumns.size())) - 1.0;
  effect.fSize = BiasCorrectedV(table, effect.fChiSquare);
  effect.fInformation = MutualInformation(table);
  effect.fbFewExpected = HasFewExpected(table);
  return effect;
}

FSEffect OfGroups(const FSGroupedValues& values) {
  const Anova anova = FSStatistics::OneWayAnova(values.fGroups, values.fTotal);
  FSEffect effect;
  effect.fTest = FSEffect::kF;
  effect.fDf1 = anova.fDf1;
  effect.fDf2 = anova.fDf2;
  effect.fTotal = values.fTotal;
  const double all = anova.fBetween + anova.fWithin;
  if (MCMV::IsMissing(all) || !(all > 0.0)) return effect;
  effect.fSize = anova.fBetween / all;
  effect.fOmegaSquared = OmegaSquared(anova);
  FSSignificance test = {FSSignificance::kF, HUGE_VAL, anova.fDf1, anova.fDf2};
  if (anova.fWithin > 0.0 && anova.fDf1 > 0.0 && anova.fDf2 > 0.0) {
    effect.fStatistic = test.fStatistic = anova.F();
  }
  effect.fLogP = test.LogP();
  return effect;
}

FSEffect OfCorrelation(const FSCorrelation& correlation) {
  FSEffect effect;
  effect.fTest = FSEffect::kT;
  effect.fTotal = correlation.fTotal;
  effect.fDf1 = correlation.fTotal - 2.0;
  effect.fSize = correlation.fR;
  if (MCMV::IsMissing(correlation.fR)) return effect;
  FSSignificance test = {FSSignificance::kT, HUGE_VAL, effect.fDf1};
  if (correlation.fR * correlation.fR < 1.0 && effect.fDf1 > 0.0) {
    effect.fStatistic = test.fStatistic = FSStatistics::CorrelationT(correlation.fR, effect.fDf1);
  }
  effect.fLogP = test.LogP();
  return effect;
}

FSInterval IntervalOf(const FSEffect& effect, double confidence) {
  if (MCMV::IsMissing(effect.fSize) || MCMV::IsMissing(effect.fStatistic)) return {};
  switch (effect.fTest) {
    case FSEffect::kPearson:
    case FSEffect::kLikelihoodRatio:
      return IntervalOfV(effect, confidence);
    case FSEffect::kF:
      return IntervalOfEtaSquared(effect, confidence);
    case FSEffect::kT:
      return IntervalOfR(effect, confidence);
    default:
      return {};
  }
}

double BiasCorrectedV(const ContingencyTable& table, double chiSquare) {
  const double total = table.fTotal;
  const double phi2 = chiSquare / total - table.DegreesOfFreedom() / (total - 1.0);
  const double dimension =
      std::min(Corrected(table.fRows.size(), total), Corrected(table.fColumns.size(), total)) - 1.0;
  if (!(total > 1.0 && dimension > 0.0)) return kMissing;
  return std::min(std::sqrt(std::max(phi2, 0.0) / dimension), 1.0);
}

double OmegaSquared(const Anova& anova) {
  if (!(anova.fDf2 > 0.0)) return kMissing;
  const double within = anova.fWithin / anova.fDf2;
  const double share =
      (anova.fBetween - anova.fDf1 * within) / (anova.fBetween + anova.fWithin + within);
  return std::max(share, 0.0);
}

double MutualInformation(const ContingencyTable& table) {
  return std::max(FSStatistics::LikelihoodRatioChiSquare(table), 0.0) /
         (2.0 * table.fTotal * kLogTwo);
}

// Counts the columns below each row's limit in their order: the grid itself may be huge.
bool HasFewExpected(const ContingencyTable& table) {
  constexpr double kSmall = 5.0;
  constexpr double kLeast = 1.0;
  constexpr double kMostSmall = 0.2;
  if (table.IsDegenerate()) return false;
  std::vector<double> columns = table.fColumns;
  std::sort(columns.begin(), columns.end());
  double small = 0.0;
  for (const double row : table.fRows) {
    if (row * columns.front() < kLeast * table.fTotal) return true;
    const auto end = std::partition_point(columns.begin(), columns.end(), [&](double column) {
      return row * column < kSmall * table.fTotal;
    });
    small += static_cast<double>(end - columns.begin());
  }
  return small > kMostSmall * static_cast<double>(table.fRows.size() * columns.size());
}

}  // namespace FSEffects
