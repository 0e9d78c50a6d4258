// How strongly a predictor and the target go together, besides how surely: what the table of
// effects shows of one predictor.
//
// Whatever cannot be computed is the missing value. A p-value of zero (no variation within the
// groups, a correlation of one) has the logarithm -infinity and no statistic.
#pragma once

#include <cmath>

#include "common/MissingValue.h"

struct FSEffect {
  enum Test { kNone, kPearson, kLikelihoodRatio, kF, kT };

  Test fTest = kNone;
  double fStatistic = MCMV::gMissingValue;
  double fDf1 = MCMV::gMissingValue;
  double fDf2 = MCMV::gMissingValue;   // of F
  double fLogP = MCMV::gMissingValue;  // natural, of the exact tail
  // Bias-corrected Cramer's V of the chi-square tests, eta squared of F, r of t.
  double fSize = MCMV::gMissingValue;
  double fOmegaSquared = MCMV::gMissingValue;  // of F
  double fInformation = MCMV::gMissingValue;   // mutual, in bits: of two categorical variables
  double fPercentMissing = MCMV::gMissingValue;
  // Too many small expected counts for chi-square to be trusted.
  bool fbFewExpected = false;

  // What the interval of the size is made of: Pearson's chi-square and min(R, C) - 1 of a table,
  // and the weight of the cases.
  double fChiSquare = MCMV::gMissingValue;
  double fDimension = MCMV::gMissingValue;
  double fTotal = MCMV::gMissingValue;

  // Whether the p-value is zero, not only small.
  bool IsPerfect() const { return std::isinf(fLogP); }
};

struct FSInterval {
  double fLow = MCMV::gMissingValue;
  double fHigh = MCMV::gMissingValue;
};
