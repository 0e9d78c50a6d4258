#include "feature/distributions/FSNoncentral.h"

#include <algorithm>
#include <cmath>

#include "feature/distributions/FSDistFun.h"

namespace {

// What a Poisson weight beside the heaviest one may still add.
constexpr double kLeastWeight = 1e-18;
constexpr double kTolerance = 1e-13;

bool IsDomain(double x, double df, double lambda) {
  return !MCMV::IsMissing(x) && df > 0.0 && !MCMV::IsMissing(df) && lambda >= 0.0 &&
         lambda <= FSNoncentral::kMostLambda;
}

// The component with the heaviest weight: its number, its central probability, and by how much that
// of the next one is lower.
struct Component {
  double fNumber;
  double fProbability;
  double fStep;
};

// The mixture with Poisson weights of that mean; `ratio` gives the step of a component over that of
// the one before, by the number of the latter. The weights are relative to the heaviest, so that
// none needs its own exponential.
template <class Ratio>
double Mixture(double mean, const Component& heaviest, Ratio ratio) {
  if (MCMV::IsMissing(heaviest.fProbability)) return FSDistFun::fMissing;
  double weights = 1.0;
  double sum = heaviest.fProbability;
  Component at = heaviest;
  for (double weight = 1.0; weight > kLeastWeight; ++at.fNumber) {
    at.fProbability = std::max(at.fProbability - at.fStep, 0.0);
    at.fStep *= ratio(at.fNumber);
    weight *= mean / (at.fNumber + 1.0);
    weights += weight;
    sum += weight * at.fProbability;
  }
  at = heaviest;
  for (double weight = 1.0; weight > kLeastWeight && at.fNumber > 0.0; --at.fNumber) {
    at.fStep /= ratio(at.fNumber - 1.0);
    at.fProbability = std::min(at.fProbability + at.fStep, 1.0);
    weight *= at.fNumber / mean;
    weights += weight;
    sum += weight * at.fProbability;
  }
  return sum / weights;
}

// Where a function that falls from lambda = 0 on comes to p; `start` is a first guess above.
template <class Cdf>
double LambdaAt(Cdf cdf, double start, double p) {
  const double least = cdf(0.0);
  if (MCMV::IsMissing(least)) return least;
  if (!(least > p)) return 0.0;
  double low = 0.0;
  double high = start;
  for (double value = cdf(high); !(value <= p) || MCMV::IsMissing(value); value = cdf(high)) {
    if (MCMV::IsMissing(value)) return FSDistFun::fMissing;
    low = high;
    high *= 2.0;
  }
  while (high - low > kTolerance * (high + 1.0)) {
    const double middle = low + (high - low) / 2.0;
    const double value = cdf(middle);
    if (MCMV::IsMissing(value)) return value;
    (value > p ? low : high) = middle;
  }
  return low + (high - low) / 2.0;
}

}  // namespace

double FSNoncentral::CdfChi(double x, double df, double lambda) {
  if (!IsDomain(x, df, lambda)) return FSDistFun::fMissing;
  if (x <= 0.0) return 0.0;
  const double number = std::floor(lambda / 2.0);
  const double a = df / 2.0;
  long error = 0;
  const double step = std::exp(FSDistFun::cgmaux(x / 2.0, a + number, error));
  return Mixture(lambda / 2.0, {number, FSDistFun::CdfChi(x, df + 2.0 * number), step},
                 [&](double k) { return x / 2.0 / (a + k + 1.0); });
}

double FSNoncentral::CdfF(double x, double df1, double df2, double lambda) {
  if (!IsDomain(x, df1, lambda) || !(df2 > 0.0) || MCMV::IsMissing(df2)) return FSDistFun::fMissing;
  if (x <= 0.0) return 0.0;
  const double number = std::floor(lambda / 2.0);
  const double below = df1 * x / (df1 * x + df2);
  const double above = df2 / (df1 * x + df2);
  const double a = df1 / 2.0;
  const double b = df2 / 2.0;
  const double df = df1 + 2.0 * number;
  const double step = std::exp(FSDistFun::cbtaux(below, above, a + number, b)) / (a + number);
  return Mixture(lambda / 2.0, {number, FSDistFun::CdfF(x * (df1 / df), df, df2), step},
                 [&](double k) { return below * (a + b + k) / (a + k + 1.0); });
}

double FSNoncentral::LambdaOfChi(double x, double df, double p) {
  return LambdaAt([&](double lambda) { return CdfChi(x, df, lambda); }, std::max(x, 1.0), p);
}

double FSNoncentral::LambdaOfF(double x, double df1, double df2, double p) {
  return LambdaAt([&](double lambda) { return CdfF(x, df1, df2, lambda); }, std::max(df1 * x, 1.0),
                  p);
}
