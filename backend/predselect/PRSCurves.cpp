#include "backend/predselect/PRSCurves.h"

#include <algorithm>
#include <cmath>

namespace {

std::size_t StepOf(double probability) {
  const double odds = std::log(probability / (1.0 - probability));
  constexpr double kEnd = PRSCurves::kRange;
  const double within = std::isnan(odds) ? 0.0 : std::clamp(odds, -kEnd, kEnd);
  return static_cast<std::size_t>(std::lround((within + kEnd) * PRSCurves::kStepsPerUnit));
}

}  // namespace

PRSCurves::PRSCurves(int nCategories)
    : fNCategories(std::min(nCategories, kMostCategories)),
      fSteps(static_cast<std::size_t>(fNCategories) * kNSteps) {}

void PRSCurves::Count(int category, std::span<const double> probabilities, double weight) {
  fWeight += weight;
  for (int k = 0; k < fNCategories; ++k) {
    const double probability = probabilities[static_cast<std::size_t>(k)];
    Step& step = fSteps[static_cast<std::size_t>(k) * kNSteps + StepOf(probability)];
    (k == category ? step.fOf : step.fOthers) += weight;
    step.fSum += weight * probability;
  }
}
