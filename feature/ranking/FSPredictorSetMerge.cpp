// Merging of predictor sets that have seen different parts of the data.

#include <limits>
#include <typeinfo>

#include "feature/FSSettings.h"
#include "feature/accumulators/FSCategoryMaps.h"
#include "feature/accumulators/FSRecode.h"
#include "feature/ranking/FSPredictorSet.h"

using namespace MCFSCommon;
using MCFeature::MCStatus;

namespace {

constexpr int kTarget = -1;  // in the place of a predictor's index

// Whether a map serves for the categories that are to be read through it.
template <class Categories>
MCStatus CheckMap(const FSRecode& recode, const Categories& categories, int variable) {
  if (!recode.IsUnambiguous()) return MCFeature::CannotMerge(MCFeature::kAmbiguousMap, variable);
  for (const auto& entry : categories) {
    if (!recode.Knows(entry.first))
      return MCFeature::CannotMerge(MCFeature::kCategory, variable, entry.first);
  }
  return {};
}

FSRecode PredictorRecode(const FSCategoryMaps* maps, std::size_t predictor) {
  if (maps == nullptr || maps->fPredictors.empty()) return FSRecode();
  return FSRecode(&maps->fPredictors[predictor]);
}

FSRecode TargetRecode(const FSCategoryMaps* maps) {
  return maps == nullptr ? FSRecode() : FSRecode(&maps->fTarget);
}

bool AreTooMany(int a, int b) { return a > std::numeric_limits<int>::max() - b; }

}  // namespace

MCStatus FSPredictorSet::CheckMerge(const FSPredictorSet& other, const FSCategoryMaps* maps) const {
  MCFeature::MergeObstacle obstacle{};
  int predictor = 0;
  if (fStatus > kAccumulated || other.fStatus != kAccumulated)
    return MCFeature::CannotMerge(MCFeature::kStage);
  if (fpSettings->FindDifference(*other.fpSettings, obstacle, predictor)) {
    return MCFeature::CannotMerge(obstacle, predictor);
  }
  if (AreTooMany(fNValidCases, other.fNValidCases) ||
      AreTooMany(fNExcludedCases, other.fNExcludedCases)) {
    return MCFeature::CannotMerge(MCFeature::kTooManyCases);
  }
  const MCStatus status = CheckAccumulators(other);
  return status.IsOK() ? CheckMaps(other, maps) : status;
}

// Settings that were changed since the pass show in the accumulators.
MCStatus FSPredictorSet::CheckAccumulators(const FSPredictorSet& other) const {
  if (fNPredictors != other.fNPredictors) return MCFeature::CannotMerge(MCFeature::kNPredictors);
  if (other.fAccumulators.size() != static_cast<std::size_t>(fNPredictors)) {
    return MCFeature::CannotMerge(MCFeature::kStage);
  }
  const bool isNew = fAccumulators.empty();
  if (!isNew && fbWithTarget != other.fbWithTarget) {
    return MCFeature::CannotMerge(MCFeature::kTargetColumn);
  }
  for (std::size_t j = 0; j < other.fAccumulators.size(); ++j) {
    const IFSPredTargetAccum* theirs = other.fAccumulators[j].get();
    const IFSPredTargetAccum* mine = isNew ? theirs : fAccumulators[j].get();
    // A predictor can have been removed before a second pass.
    if (mine == nullptr || theirs == nullptr) return MCFeature::CannotMerge(MCFeature::kStage);
    if (typeid(*mine) != typeid(*theirs)) {
      return MCFeature::CannotMerge(MCFeature::kPredictorType, static_cast<int>(j));
    }
  }
  return {};
}

MCStatus FSPredictorSet::CheckMaps(const FSPredictorSet& other, const FSCategoryMaps* maps) const {
  if (maps == nullptr) return {};
  if (!maps->fPredictors.empty() && static_cast<int>(maps->fPredictors.size()) != fNPredictors) {
    return MCFeature::CannotMerge(MCFeature::kNMaps);
  }
  MCStatus status = CheckMap(TargetRecode(maps), other.fTargetCategories, kTarget);
  for (std::size_t j = 0; j < other.fAccumulators.size() && status.IsOK(); ++j) {
    const FSMapICnt* categories = other.fAccumulators[j]->GetCategories();
    if (categories == nullptr) continue;
    status = CheckMap(PredictorRecode(maps, j), *categories, static_cast<int>(j));
  }
  return status;
}

MCStatus FSPredictorSet::Merge(const FSPredictorSet& other, const FSCategoryMaps* maps) {
  const MCStatus status = CheckMerge(other, maps);
  if (!status.IsOK()) return status;
  AllocAccum(other.fbWithTarget);
  for (std::size_t j = 0; j < fAccumulators.size(); ++j) {
    fAccumulators[j]->Merge(*other.fAccumulators[j], PredictorRecode(maps, j), TargetRecode(maps));
  }
  fTargetCategories.Merge(other.fTargetCategories, TargetRecode(maps));
  fbNoValidWeight = fbNoValidWeight && other.fbNoValidWeight;
  fbNoValidData = fbNoValidData && other.fbNoValidData;
  fValidWeight += other.fValidWeight;
  fExcludedWeight += other.fExcludedWeight;
  fNValidCases += other.fNValidCases;
  fNExcludedCases += other.fNExcludedCases;
  fElapsed += other.fElapsed;
  fbPassCompleted = false;
  return EndOfPass(!fpSettings->GetFlagTrInput() && fpSettings->GetWeightPosition() >= 0, false);
}
