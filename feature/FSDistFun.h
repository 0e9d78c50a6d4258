// Cumulative probabilities of chi-square, F and t statistics, as free-standing numerical routines.
//
// Nothing here holds state or throws. Public functions return fMissing for bad parameters, NaN
// arguments and computations that do not converge; inner routines set a flag (0 = success).
#pragma once

#include "common/MissingValue.h"

class FSDistFun {
 public:
  static constexpr double fMissing = KOVA_SystemMissing;

  // P(X <= x) for chi-square; 0 for x <= 0, missing for df <= 0.
  static double CdfChi(double x, double df);
  // P(X <= x) for F; 0 for x <= 0, missing unless both df are positive.
  static double CdfF(double x, double df1, double df2);
  // P(X <= x) for Student's t; missing for df <= 0.
  static double CdfT(double x, double df);

  // Regularised incomplete gamma integral, P(a, y), or Q(a, y) when upper.
  static double gammad(const double& y, const double& a, const bool& upper, long& error);
  // Regularised incomplete beta integral I(x; a, b), by a continued fraction of at most 10,000
  // terms.
  static double cdfbet(const double& x, const double& a, const double& b, long& error);
  static double kovacdff(const double& x, const double& df1, const double& df2, long& error);
  static double kovacdft(const double& x, const double& df, long& error);
  // ln Gamma(a) by Stirling's series, small arguments shifted up to 8; error for a <= 0.
  static double dnlgam(const double& a, long& error);
};
