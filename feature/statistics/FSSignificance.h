// The test behind a p-value: which distribution its statistic has, so that the p-value can be had
// from the tail itself (FSTail) and on the logarithmic scale, however small it is.
#pragma once

#include "common/MissingValue.h"

struct FSSignificance {
  enum Kind {
    kNone,       // nothing is tested
    kChiSquare,  // df1
    kF,          // df1, df2
    kT           // two-sided; df1
  };

  Kind fKind = kNone;
  // Infinite for a perfect relation: no variation within groups, a correlation of one.
  double fStatistic = MCMV::gMissingValue;
  double fDf1 = MCMV::gMissingValue;
  double fDf2 = MCMV::gMissingValue;

  // ln p: -infinity for a perfect relation, missing (as MCMV::gMissingValue) where nothing is
  // tested or a degree of freedom is not positive.
  double LogP() const;
  // p, 0 below the smallest double; missing like LogP.
  double P() const;
};
