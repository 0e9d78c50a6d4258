// Distribution functions of chi-square, F, t and the normal distribution, and their inverses, as
// free-standing numerical routines. Nothing here holds state, throws or loops without a bound.
//
// The public functions return fMissing for parameters outside their domain, for NaN, and where a
// computation does not converge. Each wraps inner routines that say so by a flag (0 = success).
//
// Largest relative error of the lower-tail probability against references of 40 digits
// (tests/feature/distribution_reference.csv), down to probabilities of 1e-300:
//
//   function   df 0.1 to 1e4   df up to 1e6
//   CdfChi     6e-12           2e-12
//   CdfF       7e-12           2e-11
//   CdfT       2e-11           2e-11
//
// The series for ln Gamma sets the limit for small df. IdfChi, IdfT and IdfF are good to about 5
// digits, which is what their published algorithms promise; IdfT and IdfF do not reach quantiles
// whose beta variate is below 1e-20 (very few degrees of freedom far out).
#pragma once

#include "common/MissingValue.h"

class FSDistFun {
 public:
  static constexpr double fMissing = KOVA_SystemMissing;

  // P(X <= x) for chi-square with df degrees of freedom; 0 for x <= 0. Missing for df <= 0.
  static double CdfChi(double x, double df);
  // P(X <= x) for F; 0 for x <= 0. Missing unless both df are positive.
  static double CdfF(double x, double df1, double df2);
  // P(X <= x) for Student's t. Missing for df <= 0.
  static double CdfT(double x, double df);
  // P(X <= x) for the normal distribution. Missing for sd <= 0.
  static double CdfNorm(double x, double mean, double sd);

  // Quantiles. Missing for p outside (0, 1) (IdfF gives 0 at p = 0), bad parameters, and for IdfChi
  // p outside 2e-6 to 1 - 2e-6.
  static double IdfNorm(double p, double mean, double sd);
  static double IdfChi(double p, double df);
  static double IdfT(double p, double df);
  static double IdfF(double p, double df1, double df2);

  // The regularised incomplete gamma integral P(a, y), or Q(a, y) = 1 - P when `upper`: a power
  // series for y <= 1 and y <= a, else a continued fraction (B. L. Shea, Algorithm AS 239, Applied
  // Statistics 37 (1988), 466-473). Error for a <= 0, for series that would be too long, and where
  // ln P comes out positive.
  static double gammad(const double& y, const double& a, const bool& upper, long& error);
  // ln of y^a e^-y / Gamma(a + 1). REQUIRES: y > 0, a > 0.
  static double cgmaux(const double& y, const double& a, long& error);
  // The regularised incomplete beta integral I(x; a, b), by a continued fraction of at most 10,000
  // terms. Error for a <= 0 or b <= 0, and beyond the terms.
  static double cdfbet(const double& x, const double& a, const double& b, long& error);
  // ln of x^a y^b Gamma(a + b) / (Gamma(a) Gamma(b)), y = 1 - x, without the cancellation of its
  // terms where a or b is large. REQUIRES: 0 < x < 1, a > 0, b > 0.
  static double cbtaux(const double& x, const double& y, const double& a, const double& b);
  // F and t through the incomplete beta integral.
  static double kovacdff(const double& x, const double& df1, const double& df2, long& error);
  static double kovacdft(const double& x, const double& df, long& error);
  // ln Gamma(a) by Stirling's series with four terms, small arguments shifted to 8 and above by the
  // recurrence; exact at 0.5. Error for a <= 0.
  static double dnlgam(const double& a, long& error);

  // The error function and its complement, by W. J. Cody's rational approximations (Mathematics of
  // Computation 23 (1969), 631-637), to about 1e-15 relative.
  static double derf(const double& x);
  static double derfc(const double& x);
  // The standard normal distribution function.
  static double prbnrm(const double& z);
  // The standard normal quantile (M. J. Wichura, Algorithm AS 241, PPND16, Applied Statistics 37
  // (1988), 477-484). Error outside 0 < p < 1.
  static double probit(const double& p, long& error);

  // The chi-square quantile (D. J. Best and D. E. Roberts, Algorithm AS 91, Applied Statistics 24
  // (1975), 385-388) with its relative tolerance 5e-7. Several of its constants are held in single
  // precision. Error for df <= 0 and p outside 2e-6 to 1 - 2e-6.
  static double kovaidfchi(const double& p, const double& df, long& error);
  // Its starting value. REQUIRES: 0 < p < 1, df > 0; logGamma is ln Gamma(df / 2).
  static double idfchb(const double& p, const double& df, const double& logGamma, long& error);
  // The inverse of I(x; a, b) (G. W. Cran, K. J. Martin and G. E. Thomas, Algorithm AS 109, Applied
  // Statistics 26 (1977), 111-114, with the starting value of AS 64).
  static double betinv(const double& p, const double& a, const double& b, long& error);
  static double kovaidft(const double& p, const double& df, long& error);
  static double kovaidff(const double& p, const double& df1, const double& df2, long& error);
};
