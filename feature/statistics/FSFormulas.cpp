#include "feature/statistics/FSFormulas.h"

#include <algorithm>
#include <cmath>

#include "feature/distributions/FSDistFun.h"
#include "feature/statistics/FSStatistics.h"

using FSStatistics::ContingencyTable;

namespace FSFormulas {

namespace {

FSScore ChiSquareTest(const ContingencyTable& table, double (*statistic)(const ContingencyTable&)) {
  FSScore score;
  if (table.IsDegenerate()) {
    score.fValue = 1.0;
    score.fTie1 = score.fTie2 = 0.0;
    return score;
  }
  const double chiSquare = statistic(table);
  const double df = table.DegreesOfFreedom();
  score.fTest = {FSSignificance::kChiSquare, chiSquare, df};
  const double probability = FSDistFun::CdfChi(chiSquare, df);
  if (MCMV::IsMissing(probability)) return score;
  score.fValue = 1.0 - probability;
  score.fTie1 = chiSquare;
  score.fTie2 = df;
  return score;
}

}  // namespace

FSScore Pearson(const ContingencyTable& table) {
  return ChiSquareTest(table, FSStatistics::PearsonChiSquare);
}

FSScore LikelihoodRatio(const ContingencyTable& table) {
  return ChiSquareTest(table, FSStatistics::LikelihoodRatioChiSquare);
}

FSScore Cramer(const ContingencyTable& table) {
  FSScore score;
  if (table.IsDegenerate()) return score;
  score.fTie1 = FSStatistics::PearsonChiSquare(table);
  score.fValue = FSStatistics::CramersV(table, score.fTie1);
  return score;
}

FSScore Lambda(const ContingencyTable& table) {
  FSScore score;
  score.fValue = FSStatistics::AsymmetricLambda(table);
  score.fTie1 = static_cast<double>(table.fRows.size());
  return score;
}

FSScore Anova(const FSGroupedValues& values) {
  const FSStatistics::Anova anova = FSStatistics::OneWayAnova(values.fGroups, values.fTotal);
  FSScore score;
  score.fTie2 = values.fTotal;
  score.fExtra1 = anova.fDf1;
  score.fExtra2 = anova.fDf2;
  if (MCMV::IsMissing(anova.fWithin) || MCMV::IsMissing(anova.fBetween)) return score;
  if (!(anova.fWithin > 0.0)) {
    score.fValue = 0.0;  // the groups are separated perfectly
    // Values that are all one are separated from nothing.
    if (anova.fBetween > 0.0) {
      score.fTest = {FSSignificance::kF, HUGE_VAL, anova.fDf1, anova.fDf2};
    }
    return score;
  }
  if (!(anova.fDf1 > 0.0 && anova.fDf2 > 0.0)) return score;
  const double f = anova.F();
  score.fTest = {FSSignificance::kF, f, anova.fDf1, anova.fDf2};
  const double probability = FSDistFun::CdfF(f, anova.fDf1, anova.fDf2);
  if (MCMV::IsMissing(probability)) return score;
  score.fValue = 1.0 - probability;
  score.fTie1 = f;
  return score;
}

FSScore AnovaAmongTables(const FSGroupedValues& values) {
  FSScore score = Anova(values);
  score.fTie2 = -values.fTotal;
  return score;
}

FSScore CorrelationTest(const FSCorrelation& correlation) {
  const double df = correlation.fTotal - 2.0;
  FSScore score;
  score.fExtra3 = df;
  if (MCMV::IsMissing(correlation.fR)) return score;
  const double r = std::clamp(correlation.fR, -1.0, 1.0);
  score.fTie1 = r * r;
  score.fTie2 = correlation.fTotal;
  score.fExtra1 = r;
  if (df == 0.0) {
    score.fExtra2 = 0.0;  // two cases lie on a line, whatever they are: no p-value
    return score;
  }
  if (!(r * r < 1.0 && df > 0.0)) {
    score.fValue = 0.0;
    score.fTest = {FSSignificance::kT, HUGE_VAL, df};
    return score;
  }
  const double t = FSStatistics::CorrelationT(r, df);
  score.fExtra2 = t;
  score.fTest = {FSSignificance::kT, t, df};
  const double probability = FSDistFun::CdfT(t, df);
  if (!MCMV::IsMissing(probability)) {
    score.fValue = 2.0 * (t > 0.0 ? 1.0 - probability : probability);
  }
  return score;
}

}  // namespace FSFormulas
