// Saved state of the predictor set and of its sort records.

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "feature/FSSettings.h"
#include "feature/ranking/FSPredictorSet.h"
#include "modelfiles/feature/FSStateFields.h"

using namespace MCFSCommon;

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();

bool IsAscending(const std::vector<int>& list) {
  return std::adjacent_find(list.begin(), list.end(), std::greater_equal<>()) == list.end();
}

std::int64_t UnweightedCases(const FSMapIPCnt& categories) {
  std::int64_t sum = 0;
  for (const auto& [category, counts] : categories) sum += counts.first;
  return sum;
}

}  // namespace

template <class Archive, class Self>
void FSPredSort::Fields(Archive& archive, Self& self) {
  archive.AnyDouble(self.fValue);
  archive.AnyDouble(self.fTie1);
  archive.AnyDouble(self.fTie2);
  archive.Int(self.fIndex);
}

MC_STATE_OPERATIONS(FSPredSort, "FSPRS", "FSPredSort")

// Whether the parts agree with each other and with the stage.
bool FSPredictorSet::IsConsistent() const {
  if (fNPredictors != fpSettings->GetNPredictors() ||
      fSetType != fpSettings->GetTypeAllPredictors()) {
    return false;
  }
  const std::int64_t counted = UnweightedCases(fTargetCategories);
  if (counted != 0 && (counted > fNValidCases || !fpSettings->IsCatTarget())) return false;
  if (fDeletedReasons.size() != fDeletedIndices.size() || !IsAscending(fDeletedIndices)) {
    return false;
  }
  if (fAccumulators.empty()) return fDeletedIndices.empty() && AreSortVectorsConsistent();
  for (int j = 0; j < fNPredictors; ++j) {
    const bool there = fAccumulators[static_cast<std::size_t>(j)] != nullptr;
    if (there == std::binary_search(fDeletedIndices.begin(), fDeletedIndices.end(), j))
      return false;
  }
  return fStatus != kInitial && AreSortVectorsConsistent();
}

// A sort vector names each predictor once: those that remain, unless the set has gone back to an
// earlier stage since it was sorted.
bool FSPredictorSet::AreSortVectorsConsistent() const {
  for (std::size_t c = 0; c < fSortVectors.size(); ++c) {
    if (fRanks[c].size() != fCriterionValues[c].size()) return false;
    if (fSortVectors[c].empty()) continue;
    if (fRanks[c].empty() || fAccumulators.empty()) return false;
    std::vector<int> indices;
    for (const FSPredSort& sort : fSortVectors[c]) indices.push_back(sort.fIndex);
    std::sort(indices.begin(), indices.end());
    if (!IsAscending(indices) || indices.front() < 0 || indices.back() >= fNPredictors)
      return false;
    if (fStatus < kCriteriaComputed) continue;
    const bool remain = std::all_of(indices.begin(), indices.end(), [this](int index) {
      return fAccumulators[static_cast<std::size_t>(index)] != nullptr;
    });
    if (!remain || static_cast<int>(indices.size()) != GetNValidPred()) return false;
  }
  return true;
}

template <class Archive, class Self>
void FSPredictorSet::Fields(Archive& archive, Self& self) {
  StateRanged(archive, self.fNPredictors, 0, kMostInt);
  StateRanged(archive, self.fSetType, kAllCategorical, kNoPredictors);
  StateRanged(archive, self.fStatus, kInitial, kRanked);
  archive.Flag(self.fbNoValidWeight);
  archive.Flag(self.fbNoValidData);
  archive.Flag(self.fbPassCompleted);
  FSState::Weight(archive, self.fValidWeight);
  FSState::Weight(archive, self.fExcludedWeight);
  StateRanged(archive, self.fNValidCases, 0, kMostInt);
  StateRanged(archive, self.fNExcludedCases, 0, kMostInt);
  FSState::Weight(archive, self.fElapsed);
  archive.Object(self.fTargetCategories);
  archive.Flag(self.fbWithTarget);
  AccumulatorFields(archive, self);
  StateRanged(archive, self.fNBest, 0, kMostInt);
  StateRangedInts(archive, self.fDeletedIndices, 0, self.fNPredictors - 1);
  StateRangedInts(archive, self.fDeletedReasons, kAllMissing, kSmallVariation);
  RankingFields(archive, self);
  StateRanged(archive, self.fWarning, 0, kMostInt);
  archive.Check(self.fWarning == 0 || (self.fWarning >= MCFeature::kAllCasesExcluded &&
                                       self.fWarning <= MCFeature::kNoValidWeight));
  archive.Check(self.IsConsistent());
}

// No accumulators, or one for each predictor: a flag that is 0 for a deleted one, and the object.
template <class Archive, class Self>
void FSPredictorSet::AccumulatorFields(Archive& archive, Self& self) {
  archive.Size(self.fAccumulators, 4);
  archive.Check(self.fAccumulators.empty() ||
                static_cast<int>(self.fAccumulators.size()) == self.fNPredictors);
  for (int j = 0; j < static_cast<int>(self.fAccumulators.size()); ++j) {
    auto& accumulator = self.fAccumulators[static_cast<std::size_t>(j)];
    bool there = accumulator != nullptr;
    archive.Flag(there);
    if (!there) continue;
    if constexpr (Archive::kReading) accumulator = self.NewAccumulator(j);
    archive.Object(*accumulator);
  }
}

// By criterion: the sort vectors, the ranks, the criterion values. Ranks and values are there for
// all predictors, or not at all.
template <class Archive, class Self>
void FSPredictorSet::RankingFields(Archive& archive, Self& self) {
  constexpr int kSortBytes = 33;
  for (auto& sorted : self.fSortVectors) {
    archive.Size(sorted, kSortBytes);
    for (auto& sort : sorted) archive.Object(sort);
  }
  const auto all = static_cast<std::size_t>(self.fNPredictors);
  for (auto& ranks : self.fRanks) {
    StateRangedInts(archive, ranks, -1, self.fNPredictors - 1);
    archive.Check(ranks.empty() || ranks.size() == all);
  }
  for (auto& values : self.fCriterionValues) {
    archive.Size(values, 8);
    archive.Check(values.empty() || values.size() == all);
    for (auto& value : values) archive.AnyDouble(value);
  }
}

MC_STATE_OPERATIONS(FSPredictorSet, "PRSET", "FSPredictorSet")
