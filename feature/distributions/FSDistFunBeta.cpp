// The incomplete beta integral, and F and t through it.

#include <algorithm>
#include <cmath>

#include "feature/distributions/FSDistFun.h"
#include "feature/statistics/FSNumerics.h"

using namespace FSNumerics;

namespace {

constexpr double kTolerance = 1e-15;
constexpr int kMostTerms = 10000;
constexpr double kPi = 3.141592653589793;

// ln Gamma(a + b) - ln Gamma(b) for b >= kStirlingFrom.
double LogGammaRise(double a, double b) {
  return (b - 0.5) * std::log1p(a / b) + a * std::log(a + b) - a + StirlingTail(a + b) -
         StirlingTail(b);
}

// The continued fraction of I(x; a, b), by the modified Lentz method; it converges fast for
// x < (a + 1) / (a + b + 2).
double BetaFraction(double x, double a, double b, long& error) {
  double c = 1.0;
  double d = 1.0 / NonZero(1.0 - (a + b) * x / (a + 1.0));
  double h = d;
  for (int m = 1; m <= kMostTerms; ++m) {
    const double even = m * (b - m) * x / ((a + 2 * m - 1.0) * (a + 2 * m));
    d = 1.0 / NonZero(1.0 + even * d);
    c = NonZero(1.0 + even / c);
    h *= d * c;
    const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1.0));
    d = 1.0 / NonZero(1.0 + odd * d);
    c = NonZero(1.0 + odd / c);
    h *= d * c;
    if (std::fabs(d * c - 1.0) <= kTolerance) return h;
  }
  error = 1;
  return 0.0;
}

// I(x; a, b) with y = 1 - x given too, so that neither end loses digits.
double BetaIntegral(double x, double y, double a, double b, long& error) {
  if (!(a > 0.0 && b > 0.0) || std::isnan(x) || std::isinf(a) || std::isinf(b)) {
    error = 1;
    return 0.0;
  }
  if (x <= 0.0) return 0.0;
  if (y <= 0.0) return 1.0;
  const double logX = x < 0.5 ? std::log(x) : std::log1p(-y);
  const double logY = y < 0.5 ? std::log(y) : std::log1p(-x);
  if (a == 1.0) return b * logY >= kMinExponent ? -std::expm1(b * logY) : 1.0;
  if (b == 1.0) return GuardedExp(a * logX);
  if (a == b && x == 0.5) return 0.5;
  const double front = GuardedExp(FSDistFun::cbtaux(x, y, a, b));
  if (x <= (a + 1.0) / (a + b + 2.0)) return front * BetaFraction(x, a, b, error) / a;
  return 1.0 - front * BetaFraction(y, b, a, error) / b;
}

}  // namespace

double FSDistFun::cbtaux(const double& x, const double& y, const double& a, const double& b) {
  long error = 0;
  const double sum = a + b;
  if (std::min(a, b) >= kStirlingFrom) {
    // Deviations of x and y from the mean, where the leading terms cancel.
    const double deviation = x * b - y * a;
    const auto logRatio = [](double relative, double ratio) {
      return std::fabs(relative) < 0.5 ? std::log1p(relative) : std::log(ratio);
    };
    const double logX = logRatio(deviation / a, x * (sum / a));
    const double logY = logRatio(-deviation / b, y * (sum / b));
    return a * logX + b * logY + 0.5 * (std::log(a) + std::log(b / sum)) - kLogSqrtTwoPi +
           StirlingTail(sum) - StirlingTail(a) - StirlingTail(b);
  }
  const double powers =
      a * (x < 0.5 ? std::log(x) : std::log1p(-y)) + b * (y < 0.5 ? std::log(y) : std::log1p(-x));
  if (b >= kStirlingFrom) return powers + LogGammaRise(a, b) - dnlgam(a, error);
  if (a >= kStirlingFrom) return powers + LogGammaRise(b, a) - dnlgam(b, error);
  return powers + dnlgam(sum, error) - dnlgam(a, error) - dnlgam(b, error);
}

double FSDistFun::cdfbet(const double& x, const double& a, const double& b, long& error) {
  error = 0;
  return BetaIntegral(x, 1.0 - x, a, b, error);
}

double FSDistFun::kovacdff(const double& x, const double& df1, const double& df2, long& error) {
  error = df1 > 0.0 && df2 > 0.0 && !std::isnan(x) ? 0 : 1;
  if (error != 0 || x <= 0.0) return 0.0;
  if (std::isinf(x)) return 1.0;
  const double r = df2 / df1;
  const double below = x / (r + x);
  const double above = r / (r + x);
  if (x >= 1.0) return 1.0 - BetaIntegral(above, below, df2 / 2.0, df1 / 2.0, error);
  return BetaIntegral(below, above, df1 / 2.0, df2 / 2.0, error);
}

double FSDistFun::kovacdft(const double& x, const double& df, long& error) {
  error = df > 0.0 && !std::isnan(x) ? 0 : 1;
  if (error != 0) return 0.0;
  if (x == 0.0) return 0.5;
  if (std::isinf(x)) return x > 0.0 ? 1.0 : 0.0;
  // The same arc tangent, written for the far left so that it keeps its digits.
  if (df == 1.0) return x < -1.0 ? std::atan(-1.0 / x) / kPi : std::atan(x) / kPi + 0.5;
  const double size = std::fabs(x);
  const double r = df / size;
  const double far = r / (size + r);
  const double near = size / (r + size);
  if (size > 1.0) {
    const double c = BetaIntegral(far, near, df / 2.0, 0.5, error);
    return x > 0.0 ? 1.0 - c / 2.0 : c / 2.0;
  }
  const double c = BetaIntegral(near, far, 0.5, df / 2.0, error);
  return x > 0.0 ? 0.5 + c / 2.0 : 0.5 - c / 2.0;
}
