// What the routines of FSDistFun have in common. Not part of the interface.
#pragma once

#include <cmath>

namespace FSNumerics {

// Exponents below this give 0.
inline constexpr double kMinExponent = -1021.0;
inline constexpr double kLogSqrtTwoPi = 0.9189385332046728;
// Arguments of Gamma from here on need no shift for Stirling's series.
inline constexpr double kStirlingFrom = 8.0;

inline double GuardedExp(double exponent) {
  return exponent >= kMinExponent ? std::exp(exponent) : 0.0;
}

// ln Gamma(a) - ((a - 0.5) ln a - a + ln sqrt(2 pi)), for a >= kStirlingFrom.
inline double StirlingTail(double a) {
  const double r = 1.0 / (a * a);
  return (1.0 / 12.0 + r * (-1.0 / 360.0 + r * (1.0 / 1260.0 - r / 1680.0))) / a;
}

// Keeps the denominators of a continued fraction away from zero.
inline double NonZero(double value) {
  constexpr double kTiny = 1e-300;
  return std::fabs(value) < kTiny ? kTiny : value;
}

// c[0] + c[1] x + ... + c[n-1] x^(n-1).
template <int kSize>
double Polynomial(const double (&c)[kSize], double x) {
  double sum = c[kSize - 1];
  for (int i = kSize - 2; i >= 0; --i) sum = sum * x + c[i];
  return sum;
}

}  // namespace FSNumerics
