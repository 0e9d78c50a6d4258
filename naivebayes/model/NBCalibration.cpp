#include "naivebayes/model/NBCalibration.h"

#include <algorithm>
#include <cmath>
#include <utility>

double NBCalibration::Curve::At(const Posterior& posterior) const {
  const auto isBelow = [](const Posterior& p, double x) { return p.IsBelow(x); };
  const auto after = std::upper_bound(fX.begin(), fX.end(), posterior, isBelow);
  if (after == fX.begin()) return fY.front();
  if (after == fX.end()) return fY.back();
  const auto i = static_cast<std::size_t>(after - fX.begin());
  // A slope would overflow between points that are close.
  const double share = posterior.Beyond(fX[i - 1]) / (fX[i] - fX[i - 1]);
  return fY[i - 1] + (fY[i] - fY[i - 1]) * share;
}

NBCalibration NBCalibration::ByTemperature(double temperature) {
  NBCalibration calibration;
  calibration.fMethod = kTemperature;
  calibration.fTemperature = temperature;
  return calibration;
}

NBCalibration NBCalibration::ByCurves(std::vector<Curve> curves) {
  NBCalibration calibration;
  calibration.fMethod = kIsotonic;
  calibration.fCurves = std::move(curves);
  return calibration;
}

bool NBCalibration::Fits(std::size_t classes) const {
  const auto isShare = [](double value) { return value >= 0 && value <= 1; };
  const auto isCurve = [&isShare](const Curve& curve) {
    const auto isAhead = [](double a, double b) { return !(a < b); };
    return !curve.fX.empty() && curve.fX.size() == curve.fY.size() &&
           std::ranges::all_of(curve.fX, isShare) && std::ranges::all_of(curve.fY, isShare) &&
           std::ranges::adjacent_find(curve.fX, isAhead) == curve.fX.end() &&
           std::ranges::is_sorted(curve.fY);
  };
  switch (fMethod) {
    case kTemperature:
      return std::isfinite(fTemperature) && fTemperature > 0 && fCurves.empty();
    case kIsotonic:
      return fCurves.size() == (classes == 2 ? 1 : classes) &&
             std::ranges::all_of(fCurves, isCurve);
    default:
      return fMethod == kNone;
  }
}

void NBCalibration::Softmax(std::span<double> logs, double temperature) {
  const double largest = *std::ranges::max_element(logs);
  double sum = 0;
  for (double& value : logs) {
    value = std::exp((value - largest) / temperature);
    sum += value;
  }
  for (double& value : logs) value /= sum;
}

void NBCalibration::ApplyToLogs(std::span<double> logs) const { Softmax(logs, fTemperature); }

void NBCalibration::ApplyToPosteriors(std::span<double> posteriors) const {
  double unlikely = 0;  // all but the one above a half, if there is one
  for (const double value : posteriors) unlikely += value > 0.5 ? 0 : value;
  const auto calibrated = [&](std::size_t k, const Curve& curve) {
    const double value = posteriors[k];
    return curve.At({value, value > 0.5 ? unlikely : 1 - value});
  };
  if (posteriors.size() == 2) {
    posteriors[1] = calibrated(1, fCurves[0]);
    posteriors[0] = 1 - posteriors[1];
    return;
  }
  double sum = 0;
  for (std::size_t k = 0; k < posteriors.size(); ++k) {
    posteriors[k] = calibrated(k, fCurves[k]);
    sum += posteriors[k];
  }
  for (double& value : posteriors) {
    value = sum > 0 ? value / sum : 1.0 / static_cast<double>(posteriors.size());
  }
}
