// ln Gamma and the incomplete gamma integral.

#include <cmath>
#include <limits>

#include "feature/distributions/FSDistFun.h"
#include "feature/statistics/FSNumerics.h"

using namespace FSNumerics;

namespace {

constexpr double kTolerance = 1e-14;
// More terms than any convergent case within the accuracy promised needs.
constexpr int kMostTerms = 1000000;

// True when the series for P(a, y) would take more terms than can be counted.
bool IsSeriesTooLong(double y, double a) {
  const double perDigit = -14.0 / std::log10(y / (a + 1.0));
  if (!(perDigit > 0.0)) return false;
  const double terms = 2.0 * std::sqrt(perDigit) + 10.0;
  return !(terms * terms < static_cast<double>(std::numeric_limits<long>::max()));
}

double LowerBySeries(double y, double a, long& error) {
  if (IsSeriesTooLong(y, a)) error = 1;
  double term = 1.0;
  double sum = 1.0;
  double denominator = a;
  int terms = 0;
  while (error == 0 && term >= kTolerance) {
    denominator += 1.0;
    term *= y / denominator;
    sum += term;
    if (++terms > kMostTerms) error = 1;
  }
  const double logP = std::log(sum) + FSDistFun::cgmaux(y, a, error);
  if (logP > 0.0) {
    // P is 1 to the last digit, or something is wrong.
    if (logP > 1e-8) error = 1;
    return 1.0;
  }
  return GuardedExp(logP);
}

double UpperByFraction(double y, double a, long& error) {
  if (4.0 * std::log(y) >= 1024.0) error = 1;
  double b = y + 1.0 - a;
  double c = std::numeric_limits<double>::max() / 2.0;
  double d = 1.0 / NonZero(b);
  double h = d;
  for (int i = 1; error == 0; ++i) {
    const double an = -i * (i - a);
    b += 2.0;
    d = 1.0 / NonZero(an * d + b);
    c = NonZero(b + an / c);
    h *= d * c;
    if (std::fabs(d * c - 1.0) <= kTolerance) break;
    if (i == kMostTerms) error = 1;
  }
  // Gamma(a) = Gamma(a + 1) / a.
  return GuardedExp(FSDistFun::cgmaux(y, a, error)) * a * h;
}

}  // namespace

double FSDistFun::dnlgam(const double& a, long& error) {
  if (!(a > 0.0)) {
    error = 1;
    return 0.0;
  }
  if (a == 0.5) return 0.5723649429247001;
  double shifted = a;
  double product = 1.0;
  while (shifted < kStirlingFrom) {
    product *= shifted;
    shifted += 1.0;
  }
  return (shifted - 0.5) * std::log(shifted) - shifted + kLogSqrtTwoPi + StirlingTail(shifted) -
         std::log(product);
}

// For large a the terms cancel; their sum is then taken from the relative deviation of y from a.
double FSDistFun::cgmaux(const double& y, const double& a, long& error) {
  if (a < kStirlingFrom) return a * std::log(y) - y - dnlgam(a + 1.0, error);
  const double deviation = (y - a) / a;
  const double logRatio = deviation > -0.5 ? std::log1p(deviation) : std::log(y / a);
  return a * (logRatio - deviation) - 0.5 * std::log(a) - kLogSqrtTwoPi - StirlingTail(a);
}

double FSDistFun::gammad(const double& y, const double& a, const bool& upper, long& error) {
  error = a > 0.0 && !std::isnan(y) ? 0 : 1;
  if (error != 0) return 0.0;
  if (y <= 0.0) return upper ? 1.0 : 0.0;
  if (std::isinf(y)) return upper ? 0.0 : 1.0;
  if (a == 1.0) {
    if (upper) return GuardedExp(-y);
    return -y >= kMinExponent ? -std::expm1(-y) : 1.0;
  }
  if (y <= 1.0 || y <= a) {
    const double p = LowerBySeries(y, a, error);
    return upper ? 1.0 - p : p;
  }
  const double q = UpperByFraction(y, a, error);
  return upper ? q : 1.0 - q;
}
