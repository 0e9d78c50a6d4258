#include "common/evaluation/Agreement.h"

#include <algorithm>
#include <cmath>

#include "common/evaluation/Intervals.h"

namespace MCCommon {

Agreement::Agreement(const std::vector<std::vector<double>>& cases)
    : fCases(cases), fObserved(cases.size(), 0.0), fPredicted(cases.size(), 0.0) {
  for (std::size_t i = 0; i < cases.size(); ++i) {
    for (std::size_t j = 0; j < cases.size(); ++j) {
      fObserved[i] += cases[i][j];
      fPredicted[j] += cases[i][j];
      fbPerfect = fbPerfect && (i == j || !(cases[i][j] > 0.0));
    }
    fTotal += fObserved[i];
    fCorrect += cases[i][i];
  }
}

template <class Slope>
double Agreement::ErrorOf(Slope slope) const {
  double mean = 0.0;
  double square = 0.0;
  for (std::size_t i = 0; i < fCases.size(); ++i) {
    for (std::size_t j = 0; j < fCases.size(); ++j) {
      if (!(fCases[i][j] > 0.0)) continue;
      const double share = fCases[i][j] / fTotal;
      const double s = slope(i, j);
      mean += share * s;
      square += share * s * s;
    }
  }
  return std::sqrt(std::max(square - mean * mean, 0.0) / fTotal);
}

Estimate Agreement::Accuracy() const { return Intervals::Wilson(fCorrect, fTotal); }

Estimate Agreement::Recall(std::size_t k) const {
  return Intervals::Wilson(fCases[k][k], fObserved[k]);
}

Estimate Agreement::Precision(std::size_t k) const {
  return Intervals::Wilson(fCases[k][k], fPredicted[k]);
}

Estimate Agreement::BalancedAccuracy() const {
  std::vector<Estimate> recalls;
  for (std::size_t k = 0; k < fCases.size(); ++k) {
    if (fObserved[k] > 0.0) recalls.push_back(Recall(k));
  }
  return Intervals::MeanOf(recalls);
}

bool Agreement::IsOneClass(const std::vector<double>& totals) {
  return std::ranges::count_if(totals, [](double n) { return n > 0.0; }) < 2;
}

double Agreement::ExpectedByChance() const {
  double sum = 0.0;
  for (std::size_t k = 0; k < fCases.size(); ++k) {
    sum += (fObserved[k] / fTotal) * (fPredicted[k] / fTotal);
  }
  return sum;
}

Estimate Agreement::Kappa() const {
  if (IsOneClass(fObserved)) return {};
  const double correct = fCorrect / fTotal;
  const double chance = ExpectedByChance();
  if (!(chance < 1.0)) return {};
  if (fbPerfect) return {.fValue = 1.0};
  const auto slope = [&](std::size_t i, std::size_t j) {
    const double ofChance = (fPredicted[i] + fObserved[j]) / fTotal;
    const double ofCorrect = i == j ? 1.0 : 0.0;
    return (ofCorrect * (1.0 - chance) - (1.0 - correct) * ofChance) /
           ((1.0 - chance) * (1.0 - chance));
  };
  return Intervals::Normal((correct - chance) / (1.0 - chance), ErrorOf(slope), -1.0, 1.0);
}

Estimate Agreement::Matthews() const {
  if (IsOneClass(fObserved)) return {};
  if (IsOneClass(fPredicted)) return {.fValue = 0.0};
  if (fbPerfect) return {.fValue = 1.0};
  double observed = 1.0;
  double predicted = 1.0;
  for (std::size_t k = 0; k < fCases.size(); ++k) {
    observed -= (fObserved[k] / fTotal) * (fObserved[k] / fTotal);
    predicted -= (fPredicted[k] / fTotal) * (fPredicted[k] / fTotal);
  }
  const double agreement = fCorrect / fTotal - ExpectedByChance();
  const double scale = std::sqrt(observed * predicted);
  const auto slope = [&](std::size_t i, std::size_t j) {
    const double own = (i == j ? 1.0 : 0.0) - (fPredicted[i] + fObserved[j]) / fTotal;
    const double ofScale = fObserved[i] / fTotal / observed + fPredicted[j] / fTotal / predicted;
    return (own + agreement * ofScale) / scale;
  };
  return Intervals::Normal(agreement / scale, ErrorOf(slope), -1.0, 1.0);
}

}  // namespace MCCommon
