// The cases of a block that take part in a data pass, as every predictor sees them: all have a
// valid target (where there is one) and a weight above zero. What the predictors can share of the
// target is worked out once a block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "feature/accumulators/FSRun.h"
#include "feature/accumulators/FSStepSums.h"

// A categorical value is the case value truncated toward zero; values beyond the range of an int
// become its ends.
inline int FSCategory(double value) {
  constexpr double kLow = std::numeric_limits<int>::min();
  constexpr double kHigh = std::numeric_limits<int>::max();
  return static_cast<int>(value < kLow ? kLow : (value > kHigh ? kHigh : value));
}

// Small categories are counted in arrays, others in maps.
inline constexpr int kFSSmallCategories = 128;
inline bool FSIsSmall(int category) {
  return static_cast<unsigned>(category) < static_cast<unsigned>(kFSSmallCategories);
}

// Fewer for a target beside a categorical predictor, whose table has a cell for each pair.
inline constexpr int kFSSmallTargets = 64;

// The cases of one small category: a stretch of an order of cases.
struct FSCategoryRun {
  int fCategory;
  std::size_t fBegin;
  std::size_t fEnd;
};

// The weight of a block's cases, added to a total one by one: nearly all predictors have the same.
struct FSWeightMemo {
  double fBefore = std::numeric_limits<double>::quiet_NaN();
  double fAfter = 0.0;
};

class FSCategorySort;

// The cases of a block between two ends of the sums that FSOpenPair makes of a continuous target.
struct FSTargetPiece {
  std::size_t fBegin;
  std::size_t fEnd;
  double fOrigin;
  FSStepSums fSums;  // of the target, with the end of the piece
};

struct FSCaseBlock {
  std::size_t fNCases = 0;
  const double* fpTargets = nullptr;        // null in a pass without target
  const int* fpTargetCategories = nullptr;  // null unless the target is categorical
  const double* fpWeights = nullptr;
  bool fbUnitWeights = false;   // all weights of the pass so far are 1
  bool fbSmallWeights = false;  // all weights of the block are small for FSOpenGroup
  bool fbWholeWeights = false;  // all are whole numbers, and so is their sum
  double fWeight = 0.0;         // that sum; of no use without whole weights
  // A categorical target: its cases in the order of their category, those of small ones; and the
  // others.
  const FSPlace* fpOrder = nullptr;
  std::span<const FSCategoryRun> fRuns = {};
  std::span<const FSPlace> fOthers = {};
  // All its categories so far lie in 0 .. fTargetSide - 1; 0 when some do not, or are not few.
  int fTargetSide = 0;
  // A continuous target in a block of small weights: all values of the pass so far are ordinary for
  // FSScale; the cases of the pass before the block; and each case's step from the origin of its
  // piece. There are pieces only where all weights of the pass so far are small.
  bool fbOrdinaryTargets = false;
  std::int64_t fNBefore = 0;
  std::span<const FSTargetPiece> fPieces = {};
  const double* fpTargetSteps = nullptr;
  std::uint8_t* fpHasValid = nullptr;  // set to 1 for each case with a valid predictor value;
                                       // null when all are set already
  // A worker's own.
  FSWeightMemo* fpMemo = nullptr;
  FSCategorySort* fpSort = nullptr;

  // As a run takes them.
  const double* RunWeights() const { return fbUnitWeights ? nullptr : fpWeights; }

  // A total with the weights, as they are added one by one.
  double AddWeightsTo(double total) const {
    if (fbWholeWeights && FSIsWhole(total)) return total + fWeight;
    for (std::size_t i = 0; i < fNCases; ++i) total += fpWeights[i];
    return total;
  }
};
