#include "feature/distributions/FSLogGamma.h"

#include <cmath>

#include "feature/statistics/FSNumerics.h"

double FSLogGamma::StirlingRest(double a) {
  // B(2k) / (2k (2k - 1)).
  constexpr double kTerms[] = {1.0 / 12.0,   -1.0 / 360.0,      1.0 / 1260.0, -1.0 / 1680.0,
                               1.0 / 1188.0, -691.0 / 360360.0, 1.0 / 156.0,  -3617.0 / 122400.0};
  return FSNumerics::Polynomial(kTerms, 1.0 / (a * a)) / a;
}

double FSLogGamma::Rise(double a, double b) {
  double shift = 0.0;
  for (; b < kStirlingFrom; b += 1.0) shift += std::log1p(a / b);
  return (b - 0.5) * std::log1p(a / b) + a * std::log(a + b) - a +
         (StirlingRest(a + b) - StirlingRest(b)) - shift;
}

double FSLogGamma::LogGamma(double a) { return Rise(a, 1.0) - std::log(a); }

double FSLogGamma::LogRest(double v, double logOf1PlusV) {
  return v <= -0.5 ? logOf1PlusV - v : LogRest(v);
}

double FSLogGamma::LogRest(double v) {
  if (v >= 0.5) return std::log1p(v) - v;
  // ln(1 + v) = 2 (r + r^3/3 + r^5/5 + ...) with r = v / (2 + v), and 2 r - v = -v r.
  const double r = v / (2.0 + v);
  const double square = r * r;
  double power = 2.0 * r * square;
  double sum = 0.0;
  for (int k = 3; k < 40 && std::fabs(power) > 1e-18 * std::fabs(v * r); k += 2) {
    sum += power / k;
    power *= square;
  }
  return sum - v * r;
}

double FSLogGamma::OtherSide(double l) {
  constexpr double kLogTwo = 0.6931471805599453;
  return l > -kLogTwo ? std::log(-std::expm1(l)) : std::log1p(-std::exp(l));
}
