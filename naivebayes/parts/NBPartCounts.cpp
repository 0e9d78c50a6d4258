#include "naivebayes/parts/NBPartCounts.h"

#include <algorithm>
#include <cstddef>
#include <functional>

#include "common/state/StateFields.h"

namespace {

template <class Value>
void AddAll(std::vector<Value>& into, const std::vector<Value>& from) {
  std::transform(into.begin(), into.end(), from.begin(), into.begin(), std::plus<>());
}

bool AreWeights(const std::vector<double>& weights) {
  return std::all_of(weights.begin(), weights.end(), [](double weight) { return weight >= 0; });
}

}  // namespace

bool NBPartCounts::HasShapeOf(const NBPartCounts& other) const {
  const auto isAsLong = [](const auto& a, const auto& b) { return a.size() == b.size(); };
  return fTarget.size() == other.fTarget.size() && fCategories == other.fCategories &&
         std::equal(fInputs.begin(), fInputs.end(), other.fInputs.begin(), other.fInputs.end(),
                    isAsLong);
}

void NBPartCounts::Add(const NBPartCounts& other) {
  fNCases += other.fNCases;
  fNTest += other.fNTest;
  fNRecords += other.fNRecords;
  fWeight += other.fWeight;
  fNExcluded += other.fNExcluded;
  fExcludedWeight += other.fExcludedWeight;
  AddAll(fTarget, other.fTarget);
  AddAll(fRecords, other.fRecords);
  for (std::size_t j = 0; j < fInputs.size(); ++j) AddAll(fInputs[j], other.fInputs[j]);
}

template <class Archive, class Self>
void NBPartCounts::Fields(Archive& archive, Self& self) {
  archive.Long(self.fNCases);
  archive.Long(self.fNTest);
  archive.Long(self.fNRecords);
  archive.Double(self.fWeight);
  archive.Long(self.fNExcluded);
  archive.Double(self.fExcludedWeight);
  StateDoubles(archive, self.fTarget);
  archive.Size(self.fRecords, 8);
  for (auto& records : self.fRecords) archive.Long(records);
  StateInts(archive, self.fCategories);
  archive.Size(self.fInputs, 4);
  for (auto& table : self.fInputs) StateDoubles(archive, table);
  archive.Check(self.fNCases >= 0 && self.fNTest >= 0 && self.fNRecords >= 0 &&
                self.fNExcluded >= 0 && self.fWeight >= 0 && AreWeights(self.fTarget) &&
                self.fRecords.size() == self.fTarget.size() &&
                self.fInputs.size() == self.fCategories.size());
  for (std::size_t j = 0; j < self.fInputs.size(); ++j) {
    const auto rows = static_cast<std::size_t>(std::max(self.fCategories[j], 0));
    archive.Check(
        self.fCategories[j] >= 0 && AreWeights(self.fInputs[j]) &&
        (self.fInputs[j].empty() || self.fInputs[j].size() == rows * self.fTarget.size()));
  }
}

MC_STATE_OPERATIONS(NBPartCounts, "NBPCOUNT", "NBPartCounts")
