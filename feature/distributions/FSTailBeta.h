// The upper tail of F as a beta integral: x = df1 F / (df1 F + df2), a = df1 / 2, b = df2 / 2. Both
// sides x and y = 1 - x, their logarithms and the distance from the mean are taken from F itself,
// so that none is the difference of the others. Used by FSTail; not part of the interface.
#pragma once

#include <optional>

class FSTailBeta {
 public:
  // `logF` is the logarithm of `f`, which may be 0 or infinite by rounding. REQUIRES: positive
  // degrees of freedom.
  FSTailBeta(double f, double logF, double df1, double df2);

  // ln P(X > x); nothing where a fraction does not converge.
  std::optional<double> LogUpper() const;

 private:
  struct Side {
    double fShape;     // a, b
    double fAt = 0.0;  // x, y
    double fLogAt = 0.0;
    double fAway = 0.0;  // (x - mean) relative to the mean of this side
  };

  static bool HasSeries(const Side& from, const Side& other);
  static double LogBySeries(const Side& from, const Side& other);
  static std::optional<double> LogByFraction(const Side& from, const Side& other);
  // REQUIRES: the other side is not below its mean.
  static double LogFront(const Side& from, const Side& other);

  Side fLower;
  Side fUpper;
};
