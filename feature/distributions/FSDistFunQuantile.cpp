// Quantiles of the chi-square, t and F distributions.

#include <algorithm>
#include <cmath>

#include "feature/distributions/FSDistFun.h"
#include "feature/statistics/FSNumerics.h"

using namespace FSNumerics;

namespace {

constexpr double kLogTwo = 0.6931471806;
constexpr double kChiTolerance = 5e-7;
constexpr int kMostSteps = 1000;

// One step of the chi-square quantile's Taylor series, a published polynomial of seven terms.
double ChiStep(double t, double b, double a, double c) {
  const double s1 = (210 + a * (140 + a * (105 + a * (84 + a * (70 + 60 * a))))) / 420;
  const double s2 = (420 + a * (735 + a * (966 + a * (1141 + 1278 * a)))) / 2520;
  const double s3 = (210 + a * (462 + a * (707 + 932 * a))) / 2520;
  const double s4 = (252 + a * (672 + 1182 * a) + c * (294 + a * (889 + 1740 * a))) / 5040;
  const double s5 = (84 + 264 * a + c * (175 + 606 * a)) / 2520;
  const double s6 = (120 + c * (346 + 127 * c)) / 5040;
  const double series = s1 - b * (s2 - b * (s3 - b * (s4 - b * (s5 - b * s6))));
  return t * (1 + 0.5 * t * s1 - b * c * series);
}

// Starting value for few degrees of freedom, by Newton's method.
double ChiStartSmall(double p, double c, double logGamma, long& error) {
  double ch = 0.4f;
  const double logUpper = std::log1p(-p);
  for (int step = 0; step < kMostSteps; ++step) {
    const double before = ch;
    const double p1 = 1.0 + ch * (4.67f + ch);
    const double p2 = ch * (6.73f + ch * (6.66f + ch));
    const double t = -0.5 + (4.67f + 2.0 * ch) / p1 - (6.73f + ch * (13.32f + 3.0 * ch)) / p2;
    ch -= (1.0 - std::exp(logUpper + logGamma + 0.5 * ch + c * kLogTwo) * p2 / p1) / t;
    if (std::fabs(before / ch - 1.0) <= 0.01f) return ch;
  }
  error = 1;
  return ch;
}

// Starting value of the beta quantile for p <= 0.5 (Algorithm AS 64).
double BetaStart(double p, double a, double b, double logBeta) {
  const double r = std::sqrt(-std::log(p * p));
  const double z = r - (2.30753 + 0.27061 * r) / (1.0 + (0.99229 + 0.04481 * r) * r);
  if (a > 1.0 && b > 1.0) {
    const double lambda = (z * z - 3.0) / 6.0;
    const double s = 1.0 / (2.0 * a - 1.0);
    const double t = 1.0 / (2.0 * b - 1.0);
    const double h = 2.0 / (s + t);
    const double w =
        z * std::sqrt(h + lambda) / h - (t - s) * (lambda + 5.0 / 6.0 - 2.0 / (3.0 * h));
    return a / (a + b * std::exp(2.0 * w));
  }
  const double nine = 1.0 / (9.0 * b);
  const double chi = 2.0 * b * std::pow(1.0 - nine + z * std::sqrt(nine), 3);
  if (chi <= 0.0) return 1.0 - std::exp((std::log((1.0 - p) * b) + logBeta) / b);
  const double ratio = (4.0 * a + 2.0 * b - 2.0) / chi;
  if (ratio <= 1.0) return std::exp((std::log(p * a) + logBeta) / a);
  return 1.0 - 2.0 / (ratio + 1.0);
}

// The beta quantile for p <= 0.5: Newton steps, cut to a third while they do not improve.
double BetaQuantile(double p, double a, double b, long& error) {
  constexpr double kLow = 1e-20;
  constexpr double kHigh = 0.9999999;
  constexpr double kAccuracy = 1e-08;
  const double logBeta =
      FSDistFun::dnlgam(a, error) + FSDistFun::dnlgam(b, error) - FSDistFun::dnlgam(a + b, error);
  double x = std::clamp(BetaStart(p, a, b, logBeta), kLow, kHigh);
  for (int step = 0; step < kMostSteps && error == 0; ++step) {
    const double gap = FSDistFun::cdfbet(x, a, b, error) - p;
    const double slope = std::exp((a - 1.0) * std::log(x) + (b - 1.0) * std::log1p(-x) - logBeta);
    double move = gap / slope;
    while (!(x - move > 0.0 && x - move < 1.0) && std::fabs(move) > 0.0) move /= 3.0;
    x -= move;
    if (std::fabs(move) <= kAccuracy * kAccuracy + kAccuracy * x * 1e-2) return x;
  }
  error = 1;
  return x;
}

}  // namespace

double FSDistFun::idfchb(const double& p, const double& df, const double& logGamma, long& error) {
  const double half = 0.5 * df;
  const double c = half - 1.0;
  if (df < -1.24f * std::log(p)) {
    return std::pow(p * half * std::exp(logGamma + half * kLogTwo), 1.0 / half);
  }
  if (df <= 0.32f) return ChiStartSmall(p, c, logGamma, error);
  const double z = probit(p, error);
  const double p1 = 0.222222f / df;
  const double ch = df * std::pow(z * std::sqrt(p1) + 1.0 - p1, 3);
  if (ch > 2.2f * df + 6.0) return -2.0 * (std::log1p(-p) - c * std::log(0.5 * ch) + logGamma);
  return ch;
}

double FSDistFun::kovaidfchi(const double& p, const double& df, long& error) {
  error = p >= 0.000002 && p <= 0.999998 && df > 0.0 && !std::isinf(df) ? 0 : 1;
  if (error != 0) return 0.0;
  const double half = 0.5 * df;
  const double c = half - 1.0;
  const double logGamma = dnlgam(half, error);
  double ch = idfchb(p, df, logGamma, error);
  if (ch < kChiTolerance) return ch;
  for (int step = 0; step < kMostSteps && error == 0; ++step) {
    const double before = ch;
    const double p1 = 0.5 * ch;
    const double gap = p - gammad(p1, half, false, error);
    const double t = gap * std::exp(half * kLogTwo + logGamma + p1 - c * std::log(ch));
    const double b = t / ch;
    ch += ChiStep(t, b, 0.5 * t - b * c, c);
    if (std::fabs(before / ch - 1.0) <= kChiTolerance) return ch;
  }
  error = 1;
  return ch;
}

double FSDistFun::betinv(const double& p, const double& a, const double& b, long& error) {
  error = p >= 0.0 && p <= 1.0 && a > 0.0 && b > 0.0 ? 0 : 1;
  if (error != 0) return 0.0;
  if (p == 0.0 || p == 1.0) return p;
  return p <= 0.5 ? BetaQuantile(p, a, b, error) : 1.0 - BetaQuantile(1.0 - p, b, a, error);
}

double FSDistFun::kovaidft(const double& p, const double& df, long& error) {
  error = p > 0.0 && p < 1.0 && df > 0.0 ? 0 : 1;
  if (error != 0 || p == 0.5) return 0.0;
  const double x = betinv(2.0 * std::min(p, 1.0 - p), df / 2.0, 0.5, error);
  const double t = std::sqrt(df * (1.0 - x) / x);
  return p < 0.5 ? -t : t;
}

double FSDistFun::kovaidff(const double& p, const double& df1, const double& df2, long& error) {
  error = p >= 0.0 && p < 1.0 && df1 > 0.0 && df2 > 0.0 ? 0 : 1;
  if (error != 0 || p == 0.0) return 0.0;
  const double x = betinv(p, df1 / 2.0, df2 / 2.0, error);
  return df2 * x / (df1 * (1.0 - x));
}
