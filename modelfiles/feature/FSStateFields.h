// Kinds of fields that only the feature selection engine has: sums that huge weights and values may
// make infinite, and maps.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "common/state/StateFields.h"
#include "feature/accumulators/FSPredictorState.h"
#include "feature/accumulators/FSRun.h"

namespace FSState {

// No count of cases comes near this, so sums of counts cannot overflow.
inline constexpr std::int64_t kMostCases = std::int64_t{1} << 53;

// Whether two sums of the same weights differ by no more than their rounding, which goes by `of`.
// Whole numbers are not rounded; what huge weights made infinite tells nothing.
inline bool AreOneSum(double a, double b, double of) {
  constexpr double kRounding = 1e-7;
  constexpr double kMostWhole = 1e9;
  if (of < kMostWhole && FSIsWhole(a) && FSIsWhole(b)) return a == b;
  return !(std::abs(a - b) > kRounding * of);
}

// Whether weights are a part of others, in the same sense.
inline bool IsPart(double part, double whole) {
  return !(part > whole) || AreOneSum(part, whole, whole);
}

// A sum of weights: huge ones make it infinite.
template <class Archive, class Value>
void Weight(Archive& archive, Value& weight) {
  archive.AnyDouble(weight);
  archive.Check(weight >= 0.0);
}

// A sum of weights of something that was seen.
template <class Archive, class Value>
void PositiveWeight(Archive& archive, Value& weight) {
  archive.AnyDouble(weight);
  archive.Check(weight > 0.0);
}

// A sum of squares: huge values make it infinite, or not a number.
template <class Archive, class Value>
void Squares(Archive& archive, Value& sum) {
  archive.AnyDouble(sum);
  archive.Check(!(sum < 0.0));
}

// The entries of a map, in ascending order of the key; `fields` lists those of one entry.
template <class Archive, class Entries, class EntryFields>
void MapEntries(Archive& archive, Entries& entries, int bytesPerEntry, EntryFields fields) {
  archive.Size(entries, bytesPerEntry);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    fields(entries[i]);
    archive.Check(i == 0 || entries[i - 1].first < entries[i].first);
  }
}

}  // namespace FSState

template <class Archive, class Self>
void FSPredictorState::Fields(Archive& archive, Self& self) {
  FSState::Weight(archive, self.fTotal);
  if (self.IsOfCategory()) archive.Long(self.fNValid);
  FSState::Weight(archive, self.fMissing);
  if (self.IsOfCategory()) {
    archive.Int(self.fFirst);
  } else {
    archive.Double(self.fFirst);
  }
  archive.Flag(self.fbConstant);
  archive.Check(self.fMissing <= self.fTotal && self.fNValid >= 0 &&
                self.fNValid <= FSState::kMostCases);
  archive.Check(self.fbConstant || self.fFirst != self.fNone);
}
