#include "feature/distributions/FSTailBeta.h"

#include <algorithm>
#include <cmath>

#include "feature/distributions/FSLogGamma.h"
#include "feature/statistics/FSNumerics.h"

using namespace FSLogGamma;

namespace {

constexpr double kTolerance = 1e-16;
constexpr int kMostTerms = 10'000'000;

}  // namespace

FSTailBeta::FSTailBeta(double f, double logF, double df1, double df2)
    : fLower{.fShape = df1 / 2.0}, fUpper{.fShape = df2 / 2.0} {
  const double logOdds = logF + std::log(df1 / df2);
  const double odds = f * (df1 / df2);
  if (logOdds < 0.0) {
    fLower.fAt = odds / (1.0 + odds);
    fUpper.fAt = 1.0 / (1.0 + odds);
    fLower.fLogAt = logOdds - std::log1p(odds);
    fUpper.fLogAt = -std::log1p(odds);
  } else {
    const double inverse = 1.0 / odds;
    fLower.fAt = 1.0 / (1.0 + inverse);
    fUpper.fAt = inverse / (1.0 + inverse);
    fLower.fLogAt = -std::log1p(inverse);
    fUpper.fLogAt = -logOdds - std::log1p(inverse);
  }
  if (f < 1.0) {
    fLower.fAway = fUpper.fAt * (f - 1.0);
    fUpper.fAway = -fLower.fAway * (df1 / df2);
  } else {
    fUpper.fAway = -fLower.fAt * (f - 1.0 < f ? (f - 1.0) / f : 1.0);
    fLower.fAway = -fUpper.fAway * (df2 / df1);
  }
}

// The power series in `from` converges at once, and its terms do not cancel much.
bool FSTailBeta::HasSeries(const Side& from, const Side& other) {
  if (!(from.fAt <= 0.5)) return false;
  return other.fShape <= 1.0 || from.fAt * other.fShape <= 1.0;
}

// ln I = ln(x^a Gamma(a + b) / (Gamma(a + 1) Gamma(b)) (1 + a S)): every part is relative to a, so
// that the logarithm keeps its digits where I is near 1 because a is small.
double FSTailBeta::LogBySeries(const Side& from, const Side& other) {
  double power = 1.0;
  double sum = 0.0;
  for (int n = 1; n < 100; ++n) {
    power *= (n - other.fShape) / n * from.fAt;
    sum += power / (from.fShape + n);
  }
  return from.fShape * from.fLogAt + Rise(from.fShape, other.fShape) - Rise(from.fShape, 1.0) +
         std::log1p(from.fShape * sum);
}

// ln of x^a y^b Gamma(a + b) / (Gamma(a) Gamma(b)).
double FSTailBeta::LogFront(const Side& from, const Side& other) {
  const double a = from.fShape;
  const double b = other.fShape;
  if (std::min(a, b) < kStirlingFrom) {
    return a * from.fLogAt + b * other.fLogAt + Rise(std::min(a, b), std::max(a, b)) -
           LogGamma(std::min(a, b));
  }
  return a * LogRest(from.fAway, from.fLogAt + std::log1p(b / a)) + b * LogRest(other.fAway) +
         0.5 * (std::log(a) - std::log1p(a / b)) - FSNumerics::kLogSqrtTwoPi +
         (StirlingRest(a + b) - StirlingRest(a) - StirlingRest(b));
}

// The second fraction of Algorithm 708 (BFRAC), by the modified Lentz method.
std::optional<double> FSTailBeta::LogByFraction(const Side& from, const Side& other) {
  const double a = from.fShape;
  const double b = other.fShape;
  const double x = from.fAt;
  const double y = other.fAt;
  const double below = -a * from.fAway;  // a y - b x
  const auto divisor = [&](double m) {
    return m + m * (b - m) * x / (a + 2.0 * m - 1.0) +
           (a + m) / (a + 2.0 * m + 1.0) * (below + 1.0 + m * (1.0 + y));
  };
  double c = 1e300;
  double d = 1.0 / FSNumerics::NonZero(divisor(0.0));
  double h = d;
  for (int m = 1; m <= kMostTerms; ++m) {
    const double ratio = x / (a + 2.0 * m - 1.0);
    const double numerator = (a + m - 1.0) * ratio * ((a + b + m - 1.0) * m * (b - m) * ratio);
    const double next = divisor(m);
    d = 1.0 / FSNumerics::NonZero(next + numerator * d);
    c = FSNumerics::NonZero(next + numerator / c);
    h *= d * c;
    if (std::fabs(d * c - 1.0) <= 2.0 * kTolerance) return LogFront(from, other) + std::log(h);
  }
  return std::nullopt;
}

std::optional<double> FSTailBeta::LogUpper() const {
  if (HasSeries(fUpper, fLower) && (fUpper.fShape <= 1.0 || fLower.fAway >= 0.0)) {
    return LogBySeries(fUpper, fLower);
  }
  if (HasSeries(fLower, fUpper)) return OtherSide(LogBySeries(fLower, fUpper));
  if (fLower.fAway >= 0.0) return LogByFraction(fUpper, fLower);
  const std::optional<double> lower = LogByFraction(fLower, fUpper);
  if (!lower) return std::nullopt;
  return OtherSide(*lower);
}
