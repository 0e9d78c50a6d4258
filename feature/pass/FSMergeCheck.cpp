#include "feature/pass/FSMergeCheck.h"

#include <limits>
#include <typeinfo>

#include "feature/accumulators/FSRecode.h"
#include "feature/pass/FSCounts.h"

using MCFeature::CannotMerge;
using MCFeature::MCStatus;

namespace FSMergeCheck {

namespace {

constexpr int kTarget = -1;  // in the place of a predictor's index

bool AreTooMany(int a, int b) { return a > std::numeric_limits<int>::max() - b; }

MCStatus CheckCases(const FSCounts& into, const FSCounts& from) {
  double weights[2];
  int valid = 0, excluded = 0, otherValid = 0, otherExcluded = 0;
  into.GetNValidNExcluded(weights[0], weights[1], valid, excluded);
  from.GetNValidNExcluded(weights[0], weights[1], otherValid, otherExcluded);
  const bool tooMany = AreTooMany(valid, otherValid) || AreTooMany(excluded, otherExcluded);
  return tooMany ? CannotMerge(MCFeature::kTooManyCases) : MCStatus();
}

MCStatus CheckAccumulators(const FSCounts& into, const FSCounts& from) {
  const bool isNew = into.Size() == 0;
  if (!isNew && into.IsOfPairs() != from.IsOfPairs()) return CannotMerge(MCFeature::kTargetColumn);
  for (std::size_t j = 0; j < from.Size(); ++j) {
    const IFSPredTargetAccum* theirs = from.At(j);
    const IFSPredTargetAccum* mine = isNew ? theirs : into.At(j);
    // A predictor can have been removed before a second pass.
    if (mine == nullptr || theirs == nullptr) return CannotMerge(MCFeature::kStage);
    if (typeid(*mine) != typeid(*theirs)) {
      return CannotMerge(MCFeature::kPredictorType, static_cast<int>(j));
    }
  }
  return {};
}

// Whether a map serves for the categories that are to be read through it.
template <class Categories>
MCStatus CheckMap(const FSRecode& recode, const Categories& categories, int variable) {
  if (!recode.IsUnambiguous()) return CannotMerge(MCFeature::kAmbiguousMap, variable);
  for (const auto& entry : categories) {
    if (!recode.Knows(entry.first)) {
      return CannotMerge(MCFeature::kCategory, variable, entry.first);
    }
  }
  return {};
}

MCStatus CheckMaps(const FSCounts& from, const FSCategoryMaps* maps) {
  if (maps == nullptr) return {};
  if (!maps->fPredictors.empty() && maps->fPredictors.size() != from.Size()) {
    return CannotMerge(MCFeature::kNMaps);
  }
  MCStatus status = CheckMap(FSTargetRecode(maps), from.GetTargetCategories(), kTarget);
  for (std::size_t j = 0; j < from.Size() && status.IsOK(); ++j) {
    const FSMapICnt* categories = from.At(j)->GetCategories();
    if (categories == nullptr) continue;
    status = CheckMap(FSPredictorRecode(maps, j), *categories, static_cast<int>(j));
  }
  return status;
}

}  // namespace

MCStatus Check(const FSCounts& into, const FSCounts& from, const FSCategoryMaps* maps) {
  MCStatus status = CheckCases(into, from);
  if (status.IsOK()) status = CheckAccumulators(into, from);
  return status.IsOK() ? CheckMaps(from, maps) : status;
}

}  // namespace FSMergeCheck
