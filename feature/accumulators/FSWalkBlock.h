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

// What a column holds: which values are valid, and as what they are known.
struct FSNumbers {
  static bool IsValid(double value) { return FSIsValidNumber(value); }
  static double Of(double value) { return value; }
};
struct FSCategories {
  static bool IsValid(double value) { return FSIsValidCategory(value); }
  static double Of(double value) { return FSCategory(value); }
};

// Calls take(i, value, weight) for each valid value and counts the cases. The state is worked on in
// a local copy, which stays in registers.
template <class Column, class Take>
void FSWalkBlock(const double* predictor, const FSCaseBlock& cases, FSPredictorState& shared,
                 Take take) {
  FSPredictorState state = shared;
  const double* const weights = cases.fpWeights;
  std::uint8_t* const hasValid = cases.fpHasValid;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    if (Column::IsValid(value)) [[likely]] {
      take(i, value, weights[i]);
      state.AddValid(Column::Of(value), weights[i]);
      if (hasValid != nullptr) hasValid[i] = 1;
    } else {
      state.AddMissing(weights[i]);
    }
  }
  shared = state;
}

// Whether the cases of a block may be taken in another way than one by one.
inline bool FSMayShare(const FSCaseBlock& cases, const FSPredictorState& state) {
  return cases.fbUnitWeights && state.HasWholeWeights();
}

// Counts the cases of a block whose values were taken in such a way, all but the missing ones.
template <class Column>
void FSCountBlock(const double* predictor, const FSCaseBlock& cases, std::size_t missing,
                  FSPredictorState& state) {
  state.AddUnitCases(cases.fNCases - missing, missing);
  for (std::size_t i = 0; i < cases.fNCases && state.IsAllConstant(); ++i) {
    if (Column::IsValid(predictor[i])) state.Track(Column::Of(predictor[i]));
  }
  if (cases.fpHasValid == nullptr) return;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    if (missing == 0 || Column::IsValid(predictor[i])) cases.fpHasValid[i] = 1;
  }
}
