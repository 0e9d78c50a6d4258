// Values that follow each other in the sums of a group, with their weights: a stretch of a column,
// or its cases at given places.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "common/RecordBlock.h"

// The place of a case in its block.
using FSPlace = std::uint16_t;
static_assert(MCCommon::RecordBlock::kMaxCases <= std::numeric_limits<FSPlace>::max());

struct FSRun {
  const double* fpValues;
  const double* fpWeights = nullptr;  // null: all are 1
  const FSPlace* fpOrder = nullptr;   // the places in both; null: 0, 1, 2, ...

  std::size_t PlaceOf(std::size_t k) const { return fpOrder != nullptr ? fpOrder[k] : k; }
  double ValueAt(std::size_t k) const { return fpValues[PlaceOf(k)]; }
  double WeightAt(std::size_t k) const {
    return fpWeights != nullptr ? fpWeights[PlaceOf(k)] : 1.0;
  }

  // From value k on.
  FSRun From(std::size_t k) const {
    if (fpOrder != nullptr) return {fpValues, fpWeights, fpOrder + k};
    return {fpValues + k, fpWeights != nullptr ? fpWeights + k : nullptr};
  }
};

// Whether whole numbers may be added to a weight in any order.
inline bool FSIsWhole(double weight) { return weight == std::floor(weight) && weight < 0x1p52; }

// What the weights of some cases have in common.
struct FSWeightTraits {
  bool fbValid;  // none is missing, infinite, zero or below
  bool fbUnit;   // all are 1
  bool fbSmall;  // all are small for FSOpenGroup
  bool fbWhole;  // all are whole, and so is their sum
  double fSum;   // of no use for others
};
