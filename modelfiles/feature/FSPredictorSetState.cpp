// Saved state of the predictor set, of its parts and of its sort records.

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include "feature/FSPredictorSet.h"
#include "feature/FSSettings.h"
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

double WeightOf(const FSMapICnt& categories) {
  double sum = 0.0;
  for (const auto& [category, weight] : categories) sum += weight;
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

template <class Archive, class Self>
void FSCounts::CaseFields(Archive& archive, Self& self) {
  archive.Flag(self.fbNoValidWeight);
  archive.Flag(self.fbNoValidData);
  archive.Flag(self.fbComplete);
  FSState::Weight(archive, self.fValidWeight);
  FSState::Weight(archive, self.fExcludedWeight);
  StateRanged(archive, self.fNValidCases, 0, kMostInt);
  StateRanged(archive, self.fNExcludedCases, 0, kMostInt);
}

// The target's categories, then no accumulators, or one for each predictor: a flag that is 0 for a
// deleted one, and the object.
template <class Archive, class Self>
void FSCounts::AccumulatorFields(Archive& archive, Self& self, int nPredictors) {
  archive.Object(self.fTargetCategories);
  if constexpr (Archive::kReading) {
    const std::int64_t counted = UnweightedCases(self.fTargetCategories);
    archive.Check(counted <= self.fNValidCases);
    archive.Check(counted == 0 || self.fpSettings->IsCatTarget());
  }
  archive.Flag(self.fbWithTarget);
  archive.Size(self.fAccumulators, 4);
  const int size = static_cast<int>(self.fAccumulators.size());
  archive.Check(size == 0 || size == nPredictors);
  for (int j = 0; j < size; ++j) {
    auto& accumulator = self.fAccumulators[static_cast<std::size_t>(j)];
    bool there = accumulator != nullptr;
    archive.Flag(there);
    if (!there) continue;
    if constexpr (Archive::kReading) accumulator = self.NewAccumulator(j);
    archive.Object(*accumulator);
  }
}

template <class Archive, class Self>
void FSExclusions::Fields(Archive& archive, Self& self, int nPredictors) {
  StateRangedInts(archive, self.fIndices, 0, nPredictors - 1);
  StateRangedInts(archive, self.fReasons, kAllMissing, kSmallVariation);
  archive.Check(self.fReasons.size() == self.fIndices.size() && IsAscending(self.fIndices));
}

template <class Archive, class Self>
void FSRanking::BestField(Archive& archive, Self& self) {
  StateRanged(archive, self.fNBest, 0, kMostInt);
}

// By criterion: the orders, the ranks, the criterion values. Ranks and values are there for all
// predictors, or not at all.
template <class Archive, class Self>
void FSRanking::OrderFields(Archive& archive, Self& self, int nPredictors) {
  constexpr int kSortBytes = 33;
  for (auto& order : self.fOrders) {
    archive.Size(order, kSortBytes);
    for (auto& sort : order) archive.Object(sort);
  }
  const auto all = static_cast<std::size_t>(nPredictors);
  for (auto& ranks : self.fRanks) {
    StateRangedInts(archive, ranks, -1, nPredictors - 1);
    archive.Check(ranks.empty() || ranks.size() == all);
  }
  for (auto& values : self.fValues) {
    archive.Size(values, 8);
    archive.Check(values.empty() || values.size() == all);
    for (auto& value : values) archive.AnyDouble(value);
  }
}

bool FSRanking::IsConsistent(const std::vector<bool>& remain, bool computed) const {
  for (std::size_t c = 0; c < fOrders.size(); ++c) {
    if (fRanks[c].size() != fValues[c].size()) return false;
    if (fOrders[c].empty()) continue;
    if (fRanks[c].empty()) return false;
    std::vector<bool> named(remain.size());
    for (const FSPredSort& sort : fOrders[c]) {
      const auto index = static_cast<std::size_t>(sort.fIndex);
      if (index >= named.size() || named[index]) return false;
      named[index] = true;
    }
    if (computed && named != remain) return false;
  }
  return true;
}

// Whether no categories have more weight than the valid cases.
bool FSCounts::IsConsistent() const {
  double counted = 0.0;
  for (const auto& [category, count] : fTargetCategories) counted += count.second;
  return FSState::IsPart(counted, fValidWeight) &&
         std::all_of(fAccumulators.begin(), fAccumulators.end(), [this](const auto& accumulator) {
           const FSMapICnt* categories =
               accumulator == nullptr ? nullptr : accumulator->GetCategories();
           return categories == nullptr || FSState::IsPart(WeightOf(*categories), fValidWeight);
         });
}

// Whether the parts agree with each other and with the stage.
bool FSPredictorSet::IsConsistent() const {
  if (fNPredictors != fpSettings->GetNPredictors() ||
      fSetType != fpSettings->GetTypeAllPredictors()) {
    return false;
  }
  std::vector<bool> remain(fCounts.Size());
  for (std::size_t j = 0; j < remain.size(); ++j) {
    remain[j] = IsThere(static_cast<int>(j));
    if (remain[j] == fExclusions.Contains(static_cast<int>(j))) return false;
  }
  if (remain.empty() ? fExclusions.Size() > 0 : fStatus == kInitial) return false;
  if (!fCounts.IsConsistent()) return false;
  return fRanking.IsConsistent(remain, fStatus >= kCriteriaComputed);
}

template <class Archive, class Self>
void FSPredictorSet::Fields(Archive& archive, Self& self) {
  StateRanged(archive, self.fNPredictors, 0, kMostInt);
  StateRanged(archive, self.fSetType, kAllCategorical, kNoPredictors);
  StateRanged(archive, self.fStatus, kInitial, kRanked);
  FSCounts::CaseFields(archive, self.fCounts);
  // The time that work took is no part of what it counted: one run saves the same bytes as another.
  FSState::Weight(archive, self.fStoredElapsed);
  if constexpr (Archive::kReading) self.fElapsed = self.fStoredElapsed;
  FSCounts::AccumulatorFields(archive, self.fCounts, self.fNPredictors);
  FSRanking::BestField(archive, self.fRanking);
  FSExclusions::Fields(archive, self.fExclusions, self.fNPredictors);
  FSRanking::OrderFields(archive, self.fRanking, self.fNPredictors);
  StateRanged(archive, self.fWarning, 0, kMostInt);
  archive.Check(self.fWarning == 0 || (self.fWarning >= MCFeature::kAllCasesExcluded &&
                                       self.fWarning <= MCFeature::kNoValidWeight));
  if constexpr (Archive::kReading) archive.Check(self.IsConsistent());
}

MC_STATE_OPERATIONS(FSPredictorSet, "PRSET", "FSPredictorSet")
