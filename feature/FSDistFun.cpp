#include "feature/FSDistFun.h"

#include <cmath>

namespace {

constexpr double kMinExponent = -1021;
constexpr double kTiny = 1e-300;

double GuardedExp(double e) { return e >= kMinExponent ? std::exp(e) : 0; }

double StirlingTail(double a) {
  const double r = 1 / (a * a);
  return (1.0 / 12 + r * (-1.0 / 360 + r * (1.0 / 1260 - r / 1680))) / a;
}

double NonZero(double v) { return std::fabs(v) < kTiny ? kTiny : v; }

// Upper gamma fraction by the modified Lentz method.
double GammaFraction(double y, double a, long& error) {
  double b = y + 1 - a, c = 1 / kTiny, d = 1 / NonZero(b), h = d;
  for (int i = 1; i <= 1000000; ++i) {
    const double an = -i * (i - a);
    b += 2;
    d = 1 / NonZero(an * d + b);
    c = NonZero(b + an / c);
    h *= d * c;
    if (std::fabs(d * c - 1) <= 1e-14) return h;
  }
  error = 1;
  return 0;
}

double BetaFraction(double x, double a, double b, long& error) {
  double c = 1, d = 1 / NonZero(1 - (a + b) * x / (a + 1)), h = d;
  for (int m = 1; m <= 10000; ++m) {
    const double even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
    d = 1 / NonZero(1 + even * d);
    c = NonZero(1 + even / c);
    h *= d * c;
    const double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
    d = 1 / NonZero(1 + odd * d);
    c = NonZero(1 + odd / c);
    h *= d * c;
    if (std::fabs(d * c - 1) <= 1e-15) return h;
  }
  error = 1;
  return 0;
}

double Wrap(double value, long error) {
  return error != 0 || std::isnan(value) ? FSDistFun::fMissing : value;
}

}  // namespace

double FSDistFun::dnlgam(const double& a, long& error) {
  error = a > 0 ? 0 : 1;
  if (error != 0) return 0;
  if (a == 0.5) return 0.5723649429247001;
  double shifted = a, product = 1;
  for (; shifted < 8; ++shifted) product *= shifted;
  return (shifted - 0.5) * std::log(shifted) - shifted + 0.9189385332046728 +
         StirlingTail(shifted) - std::log(product);
}

double FSDistFun::gammad(const double& y, const double& a, const bool& upper, long& error) {
  error = a > 0 && !std::isnan(y) ? 0 : 1;
  if (error != 0) return 0;
  if (y <= 0) return upper ? 1 : 0;
  if (std::isinf(y)) return upper ? 0 : 1;
  if (a == 1) return upper ? GuardedExp(-y) : -std::expm1(-y);
  const double logGamma = dnlgam(a, error);
  const double power = a * std::log(y) - y - logGamma;
  if (y <= 1 || y <= a) {
    const double ratio = -14 / std::log10(y / (a + 1));
    if (!(ratio < 1e12)) error = 1;
    double term = 1, sum = 1;
    for (double n = a + 1; error == 0 && term >= 1e-14; ++n) sum += term *= y / n;
    const double p = GuardedExp(power - std::log(a) + std::log(sum));
    return upper ? 1 - p : p;
  }
  const double q = GuardedExp(power) * GammaFraction(y, a, error);
  return upper ? q : 1 - q;
}

double FSDistFun::cdfbet(const double& x, const double& a, const double& b, long& error) {
  error = a > 0 && b > 0 && !std::isnan(x) ? 0 : 1;
  if (error != 0) return 0;
  if (x <= 0) return 0;
  if (x >= 1) return 1;
  if (a == 1) return -std::expm1(b * std::log1p(-x));
  if (b == 1) return GuardedExp(a * std::log(x));
  if (a == b && x == 0.5) return 0.5;
  long flags[3] = {0, 0, 0};
  const double logBeta = dnlgam(a, flags[0]) + dnlgam(b, flags[1]) - dnlgam(a + b, flags[2]);
  const double front = GuardedExp(a * std::log(x) + b * std::log1p(-x) - logBeta);
  if (x <= (a + 1) / (a + b + 2)) return front * BetaFraction(x, a, b, error) / a;
  return 1 - front * BetaFraction(1 - x, b, a, error) / b;
}

double FSDistFun::kovacdff(const double& x, const double& df1, const double& df2, long& error) {
  error = df1 > 0 && df2 > 0 && !std::isnan(x) ? 0 : 1;
  if (error != 0 || x <= 0) return 0;
  if (std::isinf(x)) return 1;
  const double r = df2 / df1;
  if (x >= 1) return 1 - cdfbet(r / (r + x), df2 / 2, df1 / 2, error);
  return cdfbet(x / (r + x), df1 / 2, df2 / 2, error);
}

double FSDistFun::kovacdft(const double& x, const double& df, long& error) {
  error = df > 0 && !std::isnan(x) ? 0 : 1;
  if (error != 0) return 0;
  if (x == 0) return 0.5;
  if (df == 1) return std::atan(x) / 3.141592653589793 + 0.5;
  const double size = std::fabs(x), r = df / size;
  if (size > 1) {
    const double c = cdfbet(r / (size + r), df / 2, 0.5, error);
    return x > 0 ? 1 - c / 2 : c / 2;
  }
  const double c = cdfbet(size / (r + size), 0.5, df / 2, error);
  return x > 0 ? 0.5 + c / 2 : 0.5 - c / 2;
}

double FSDistFun::CdfChi(double x, double df) {
  long error = 0;
  const double p = gammad(x / 2, df / 2, false, error);
  return Wrap(p, error);
}

double FSDistFun::CdfF(double x, double df1, double df2) {
  long error = 0;
  const double p = kovacdff(x, df1, df2, error);
  return Wrap(p, error);
}

double FSDistFun::CdfT(double x, double df) {
  long error = 0;
  const double p = kovacdft(x, df, error);
  return Wrap(p, error);
}
