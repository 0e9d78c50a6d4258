// Noncentral chi-square and F: their distribution functions, and the noncentrality that makes an
// observed value a given quantile, from which intervals of effect sizes are made.
//
// Both are mixtures of central distributions with Poisson weights, summed from the heaviest weight
// outwards while the central probabilities follow from one another by recurrence (C. G. Ding,
// Algorithm AS 275, Applied Statistics 41 (1992), 478-482; D. Benton and K. Krishnamoorthy,
// Computational Statistics & Data Analysis 43 (2003), 249-267). A sum takes about 20 sqrt(lambda)
// terms.
//
// The functions hold no state and never throw. They return FSDistFun::fMissing for parameters
// outside their domain, for a noncentrality above kMostLambda and where the central function gives
// none. Against references of 40 digits (tests/feature/effect_reference.csv) probabilities are right
// to 4e-12 relative or 1e-15 absolute, whichever is more, and noncentralities to 6e-12 relative.
#pragma once

class FSNoncentral {
 public:
  static constexpr double kMostLambda = 1e10;

  // P(X <= x) for df degrees of freedom and noncentrality lambda; 0 for x <= 0. Missing unless
  // df > 0 and lambda >= 0.
  static double CdfChi(double x, double df, double lambda);
  static double CdfF(double x, double df1, double df2, double lambda);

  // The lambda at which P(X <= x) = p. 0 where even without noncentrality no more than p is below
  // x. REQUIRES: 0 < p < 1.
  static double LambdaOfChi(double x, double df, double p);
  static double LambdaOfF(double x, double df1, double df2, double p);
};
