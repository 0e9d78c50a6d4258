#include "feature/statistics/FSSignificance.h"

#include <cmath>

#include "feature/distributions/FSTail.h"

double FSSignificance::LogP() const {
  if (!(fDf1 > 0.0 && (fKind != kF || fDf2 > 0.0))) return MCMV::gMissingValue;
  if (std::isinf(fStatistic)) return -HUGE_VAL;
  switch (fKind) {
    case kChiSquare:
      return FSTail::LogUpperChi(fStatistic, fDf1);
    case kF:
      return FSTail::LogUpperF(fStatistic, fDf1, fDf2);
    case kT:
      return FSTail::LogTwoSidedT(fStatistic, fDf1);
    default:
      return MCMV::gMissingValue;
  }
}

double FSSignificance::P() const {
  const double logP = LogP();
  return logP == MCMV::gMissingValue ? logP : std::exp(logP);
}
