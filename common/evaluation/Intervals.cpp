#include "common/evaluation/Intervals.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace MCCommon::Intervals {

namespace {

// P(|T| <= t) for a whole number of degrees of freedom, by its finite series.
double Within(double t, int degrees) {
  const double angle = std::atan(t / std::sqrt(static_cast<double>(degrees)));
  const double cosine = std::cos(angle);
  const bool isOdd = degrees % 2 == 1;
  double term = isOdd ? cosine : 1.0;
  double sum = degrees == 1 ? 0.0 : term;
  for (int i = isOdd ? 3 : 2; i <= degrees - 2; i += 2) {
    term *= cosine * cosine * (i - 1) / i;
    sum += term;
  }
  return isOdd ? 2.0 * std::numbers::inv_pi * (angle + std::sin(angle) * sum)
               : std::sin(angle) * sum;
}

}  // namespace

Estimate Wilson(double hits, double n) {
  if (!(n > 0.0)) return {};
  const double share = hits / n;
  const double z2 = kNormal * kNormal;
  const double middle = (share + z2 / (2.0 * n)) / (1.0 + z2 / n);
  const double half =
      kNormal / (1.0 + z2 / n) * std::sqrt(share * (1.0 - share) / n + z2 / (4.0 * n * n));
  // The share itself is within; rounding may say otherwise at both ends.
  return {share, std::clamp(middle - half, 0.0, share), std::clamp(middle + half, share, 1.0)};
}

Estimate Normal(double value, double error, double least, double most) {
  if (!(error > 0.0) || MCMV::IsMissing(error)) return {.fValue = value};
  return {value, std::max(value - kNormal * error, least), std::min(value + kNormal * error, most)};
}

Estimate Logit(double value, double error) {
  if (!(error > 0.0) || !(value > 0.0) || !(value < 1.0)) return {.fValue = value};
  const double odds = std::log(value / (1.0 - value));
  const double half = kNormal * error / (value * (1.0 - value));
  const auto back = [](double x) { return 1.0 / (1.0 + std::exp(-x)); };
  return {value, back(odds - half), back(odds + half)};
}

Estimate MeanOf(const std::vector<Estimate>& shares) {
  if (shares.empty()) return {};
  double sum = 0.0;
  double below = 0.0;
  double above = 0.0;
  for (const Estimate& share : shares) {
    sum += share.fValue;
    below += (share.fValue - share.fLow) * (share.fValue - share.fLow);
    above += (share.fHigh - share.fValue) * (share.fHigh - share.fValue);
  }
  const auto n = static_cast<double>(shares.size());
  const double mean = sum / n;
  return {mean, std::max(mean - std::sqrt(below) / n, 0.0),
          std::min(mean + std::sqrt(above) / n, 1.0)};
}

double Student(int degrees) {
  double low = kNormal;
  double high = 16.0;  // beyond the quantile of 1 degree, 12.7
  while (high - low > 1e-13 * high) {
    const double middle = low + (high - low) / 2.0;
    (Within(middle, degrees) < 0.95 ? low : high) = middle;
  }
  return low;
}

}  // namespace MCCommon::Intervals
