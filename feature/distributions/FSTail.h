// Upper tails of chi-square, F, t and the normal distribution, each computed as what it is: never
// as 1 minus the other side where that would lose it, and on the logarithmic scale, so that a tail
// far below the smallest double still has its logarithm. FSDistFun is the family behind 1 - c; this
// one stands beside it for those who want p-values that do not end at the rounding of 1 - c.
//
// The functions hold no state and never throw. They return FSDistFun::fMissing for a statistic that
// is missing, NaN or infinite, for degrees of freedom that are not positive and finite, and where a
// fraction does not converge.
//
// Methods, by region:
//   chi-square: the power series of the lower side for y = x/2 up to a = df/2 or 1, else Legendre's
//     continued fraction of the upper side (B. L. Shea, Algorithm AS 239, Applied Statistics 37
//     (1988), 466-473), both under a front factor without cancelling terms.
//   F, t: the power series where one argument of the beta integral is small, else the continued
//     fraction of the side away from the mean (A. R. DiDonato and A. H. Morris, Algorithm 708, ACM
//     Transactions on Mathematical Software 18 (1992), 360-373).
//   normal: chi-square with one degree of freedom.
//   ln Gamma: differences of Stirling's series with eight terms, relative to the smaller argument.
//
// For degrees of freedom from 1e-3 to 1e9 and statistics from 1e-300 to 1e300 the largest relative
// error of p down to 1e-300, and of ln p near 0 and below, is 5e-13 against references of 50 digits
// (tests/feature/tail_reference.csv; by function in docs/methods.md).
#pragma once

class FSTail {
 public:
  // ln P(X > x); 0 for x <= 0.
  static double LogUpperChi(double x, double df);
  // ln P(X > x); 0 for x <= 0.
  static double LogUpperF(double x, double df1, double df2);
  // ln P(|T| > |t|).
  static double LogTwoSidedT(double t, double df);
  // ln P(Z > z).
  static double LogUpperNorm(double z);

  // The same as probabilities; 0 below the smallest double.
  static double UpperChi(double x, double df);
  static double UpperF(double x, double df1, double df2);
  static double TwoSidedT(double t, double df);
  static double UpperNorm(double z);
};
