#include "naivebayes/model/NBCalibration.h"

#include <algorithm>
#include <cmath>
#include <utility>

double NBCalibration::Curve::At(double x) const {
  const auto after = std::upper_bound(fX.begin(), fX.end(), x);
  if (after == fX.begin()) return fY.front();
  if (after == fX.end()) return fY.back();
  const auto i = static_cast<std::size_t>(after - fX.begin());
  return fY[i - 1] + (x - fX[i - 1]) * ((fY[i] - fY[i - 1]) / (fX[i] - fX[i - 1]));
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
  if (posteriors.size() == 2) {
    posteriors[1] = fCurves[0].At(posteriors[1]);
    posteriors[0] = 1 - posteriors[1];
    return;
  }
  double sum = 0;
  for (std::size_t k = 0; k < posteriors.size(); ++k) {
    posteriors[k] = fCurves[k].At(posteriors[k]);
    sum += posteriors[k];
  }
  for (double& value : posteriors) {
    value = sum > 0 ? value / sum : 1.0 / static_cast<double>(posteriors.size());
  }
}
