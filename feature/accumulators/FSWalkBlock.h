// The loop that every accumulator runs over a block: one piece, so that blocks treat missing values
// and weights as single cases do.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/MissingValue.h"
#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSPredictorState.h"

// Whether a value is valid: in a categorical column -1 means missing too.
inline bool FSIsValidNumber(double value) { return !MCMV::IsMissing(value); }
inline bool FSIsValidCategory(double value) {
  return !MCMV::IsMissing(value) && FSCategory(value) != -1;
}

// Categories 0 .. kFSSmallCategories - 1 of a predictor are small.
inline constexpr int kFSSmallCategories = 128;

// What a walk does with a value of a column. A walk over small categories ends at a larger one.
enum class FSVerdict { kTake, kMissing, kEnd };

struct FSNumbers {
  static FSVerdict Of(double value) {
    return FSIsValidNumber(value) ? FSVerdict::kTake : FSVerdict::kMissing;
  }
};
struct FSCategories {
  static FSVerdict Of(double value) {
    return FSIsValidCategory(value) ? FSVerdict::kTake : FSVerdict::kMissing;
  }
};
struct FSSmallCategories {
  static FSVerdict Of(double value) {
    if (value > -1.0 && value < kFSSmallCategories) [[likely]]
      return FSVerdict::kTake;
    return FSIsValidCategory(value) ? FSVerdict::kEnd : FSVerdict::kMissing;
  }
};

// Rows of a table that has room for the small categories of a column.
inline int FSSmallRows(const double* predictor, std::size_t n) {
  double largest = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    if (predictor[i] < kFSSmallCategories && predictor[i] > largest) largest = predictor[i];
  }
  return static_cast<int>(largest) + 1;
}

// The share w / (W + w) of case i in an overall mean, W the predictor's valid weight before it.
inline double FSShareOf(const FSPredictorState& state, const FSCaseBlock& cases, std::size_t i) {
  const double before = state.GetValidWeight();
  if (before == cases.fpWeightsBefore[i]) [[likely]]
    return cases.fpShares[i];
  const double weight = cases.fpWeights[i];
  return weight / (before + weight);
}

// Calls take(state, i, value, weight) for each valid value from case `first` on and counts the
// others as missing. Returns the case at which the walk ended. The state is worked on in a local
// copy, which stays in registers.
template <class Column, class Take>
std::size_t FSWalkBlock(const double* predictor, const FSCaseBlock& cases, std::size_t first,
                        FSPredictorState& shared, Take take) {
  FSPredictorState state = shared;
  const double* const weights = cases.fpWeights;
  const bool marks = cases.fpHasValid != nullptr;
  std::size_t i = first;
  for (; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    const double weight = weights[i];
    const FSVerdict verdict = Column::Of(value);
    if (verdict == FSVerdict::kTake) [[likely]] {
      take(state, i, value, weight);
      if (marks) cases.fpHasValid[i] = 1;
    } else if (verdict == FSVerdict::kMissing) {
      state.AddMissing(weight);
    } else {
      break;
    }
  }
  shared = state;
  return i;
}
