#include "common/evaluation/ScoreCurves.h"

#include <algorithm>
#include <cmath>

#include "common/state/StateFields.h"

namespace MCCommon {

namespace {

std::size_t StepOf(double probability) {
  const double odds = std::log(probability / (1.0 - probability));
  constexpr double kEnd = ScoreCurves::kRange;
  const double within = std::isnan(odds) ? 0.0 : std::clamp(odds, -kEnd, kEnd);
  return static_cast<std::size_t>(std::lround((within + kEnd) * ScoreCurves::kStepsPerUnit));
}

}  // namespace

ScoreCurves::ScoreCurves(int nCategories)
    : fNCategories(std::min(nCategories, kMostCategories)),
      fSteps(static_cast<std::size_t>(fNCategories) * kNSteps) {}

void ScoreCurves::Count(int category, std::span<const double> probabilities, double weight) {
  fWeight += weight;
  for (int k = 0; k < fNCategories; ++k) {
    const double probability = probabilities[static_cast<std::size_t>(k)];
    Step& step = fSteps[static_cast<std::size_t>(k) * kNSteps + StepOf(probability)];
    (k == category ? step.fOf : step.fOthers) += weight;
    step.fSum += weight * probability;
  }
}

void ScoreCurves::Add(const ScoreCurves& other) {
  fWeight += other.fWeight;
  for (std::size_t i = 0; i < fSteps.size(); ++i) {
    fSteps[i].fOf += other.fSteps[i].fOf;
    fSteps[i].fOthers += other.fSteps[i].fOthers;
    fSteps[i].fSum += other.fSteps[i].fSum;
  }
}

// Most steps are empty: only the others are stored.
template <class Archive, class Self>
void ScoreCurves::Fields(Archive& archive, Self& self) {
  archive.Int(self.fNCategories);
  archive.Check(self.fNCategories >= 0 && self.fNCategories <= kMostCategories);
  archive.Double(self.fWeight);
  std::vector<int> places;
  if constexpr (Archive::kReading) {
    self.fSteps.assign(static_cast<std::size_t>(self.fNCategories) * kNSteps, {});
  } else {
    for (std::size_t i = 0; i < self.fSteps.size(); ++i) {
      if (self.fSteps[i].fOf + self.fSteps[i].fOthers > 0.0) places.push_back(static_cast<int>(i));
    }
  }
  StateRangedInts(archive, places, 0, static_cast<int>(self.fSteps.size()) - 1);
  for (const int place : places) {
    auto& step = self.fSteps[static_cast<std::size_t>(place)];
    archive.Double(step.fOf);
    archive.Double(step.fOthers);
    archive.Double(step.fSum);
    archive.Check(step.fOf >= 0.0 && step.fOthers >= 0.0 && step.fSum >= 0.0);
  }
}

MC_STATE_OPERATIONS(ScoreCurves, "PSCURVES", "ScoreCurves")

}  // namespace MCCommon
