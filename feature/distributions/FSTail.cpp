// Chi-square and the normal distribution, and the probabilities of all.

#include "feature/distributions/FSTail.h"

#include <cmath>
#include <optional>

#include "feature/distributions/FSDistFun.h"
#include "feature/distributions/FSLogGamma.h"
#include "feature/distributions/FSTailBeta.h"
#include "feature/statistics/FSNumerics.h"

using namespace FSLogGamma;

namespace {

constexpr double kTolerance = 1e-16;
// Series and fraction take about 10 sqrt(df) terms near the mean.
constexpr int kMostTerms = 10'000'000;
constexpr double kLogTwo = 0.6931471805599453;

bool IsDf(double df) { return df > 0.0 && !MCMV::IsMissing(df); }

double OrMissing(std::optional<double> value) { return value.value_or(FSDistFun::fMissing); }

double Probability(double logP) {
  // The marker of a missing value is finite; an underflow's logarithm may be infinite.
  return logP == FSDistFun::fMissing ? logP : std::exp(logP);
}

// ln of y^a e^-y / Gamma(a).
double LogFront(double y, double a) {
  if (a < kStirlingFrom) return a * std::log(y) - y - LogGamma(a);
  return a * LogRest((y - a) / a, std::log(y / a)) + 0.5 * std::log(a) - FSNumerics::kLogSqrtTwoPi -
         StirlingRest(a);
}

// ln P(a, y) for small a and y, where P may be near 1: alternating, so that what is away from 1
// stays relative to a.
double LogLowerNearOne(double y, double a) {
  double power = 1.0;
  double sum = 0.0;
  for (int n = 1; n < 40; ++n) {
    power *= -y / n;
    sum += power / (a + n);
  }
  return a * std::log(y) - Rise(a, 1.0) + std::log1p(a * sum);
}

std::optional<double> LogLowerBySeries(double y, double a) {
  double term = 1.0;
  double sum = 1.0;
  for (int n = 1; n <= kMostTerms; ++n) {
    term *= y / (a + n);
    sum += term;
    if (term < kTolerance * sum) return LogFront(y, a) + std::log(sum / a);
  }
  return std::nullopt;
}

std::optional<double> LogUpperByFraction(double y, double a) {
  double b = y + 1.0 - a;
  double c = 1e300;
  double d = 1.0 / FSNumerics::NonZero(b);
  double h = d;
  for (int i = 1; i <= kMostTerms; ++i) {
    const double an = -i * (i - a);
    b += 2.0;
    d = 1.0 / FSNumerics::NonZero(an * d + b);
    c = FSNumerics::NonZero(b + an / c);
    h *= d * c;
    if (std::fabs(d * c - 1.0) <= 2.0 * kTolerance) return LogFront(y, a) + std::log(h);
  }
  return std::nullopt;
}

// ln Q(a, y).
std::optional<double> LogUpperGamma(double y, double a) {
  if (y > 1.0 && y > a) return LogUpperByFraction(y, a);
  const std::optional<double> lower =
      a < 1.0 ? std::optional(LogLowerNearOne(y, a)) : LogLowerBySeries(y, a);
  if (!lower) return std::nullopt;
  return OtherSide(*lower);
}

}  // namespace

double FSTail::LogUpperChi(double x, double df) {
  if (MCMV::IsMissing(x) || !IsDf(df)) return FSDistFun::fMissing;
  return x <= 0.0 ? 0.0 : OrMissing(LogUpperGamma(x / 2.0, df / 2.0));
}

double FSTail::LogUpperF(double x, double df1, double df2) {
  if (MCMV::IsMissing(x) || !IsDf(df1) || !IsDf(df2)) return FSDistFun::fMissing;
  return x <= 0.0 ? 0.0 : OrMissing(FSTailBeta(x, std::log(x), df1, df2).LogUpper());
}

double FSTail::LogTwoSidedT(double t, double df) {
  if (MCMV::IsMissing(t) || !IsDf(df)) return FSDistFun::fMissing;
  // The square may leave the doubles at either end; its logarithm does not.
  return t == 0.0 ? 0.0
                  : OrMissing(FSTailBeta(t * t, 2.0 * std::log(std::fabs(t)), 1.0, df).LogUpper());
}

double FSTail::LogUpperNorm(double z) {
  if (MCMV::IsMissing(z)) return FSDistFun::fMissing;
  if (z == 0.0) return -kLogTwo;
  if (std::fabs(z) > 1e154) return z > 0.0 ? -HUGE_VAL : 0.0;
  const double beyond = LogUpperChi(z * z, 1.0) - kLogTwo;
  return z > 0.0 ? beyond : OtherSide(beyond);
}

double FSTail::UpperChi(double x, double df) { return Probability(LogUpperChi(x, df)); }

double FSTail::UpperF(double x, double df1, double df2) {
  return Probability(LogUpperF(x, df1, df2));
}

double FSTail::TwoSidedT(double t, double df) { return Probability(LogTwoSidedT(t, df)); }

double FSTail::UpperNorm(double z) { return Probability(LogUpperNorm(z)); }
