#include "feature/statistics/FSTests.h"

#include "common/MissingValue.h"
#include "feature/distributions/FSDistFun.h"
#include "feature/statistics/FSStatistics.h"

namespace FSTests {

void AnovaTest(const FSMapIStat& groups, double overallMean, double total, double& value,
               double& tie1, double& df1, double& df2) {
  const FSStatistics::Anova anova = FSStatistics::OneWayAnova(groups, overallMean, total);
  df1 = anova.fDf1;
  df2 = anova.fDf2;
  if (MCMV::IsMissing(anova.fWithin) || MCMV::IsMissing(anova.fBetween)) return;
  if (!(anova.fWithin > 0.0)) {
    value = 0.0;  // the groups are separated perfectly
    return;
  }
  if (!(df1 > 0.0 && df2 > 0.0)) return;
  const double f = anova.F();
  const double probability = FSDistFun::CdfF(f, df1, df2);
  if (MCMV::IsMissing(probability)) return;
  value = 1.0 - probability;
  tie1 = f;
}

void CorrelationTest(double r, double total, double& value, double& t) {
  const double df = total - 2.0;
  if (!(r * r < 1.0 && df >= 0.0)) {
    value = 0.0;
    return;
  }
  t = FSStatistics::CorrelationT(r, df);
  const double probability = FSDistFun::CdfT(t, df);
  if (!MCMV::IsMissing(probability)) value = 2.0 * (t > 0.0 ? 1.0 - probability : probability);
}

}  // namespace FSTests
