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

// Adds the weights of a block one by one to a total, or remembers what that makes.
inline double FSTotalWith(double total, const FSCaseBlock& cases) {
  FSWeightMemo& memo = *cases.fpMemo;
  if (memo.fBefore != total) memo = {total, cases.AddWeightsTo(total)};
  return memo.fAfter;
}

// Counts the cases of a block whose values were taken in another way than by FSWalkBlock, of which
// so many are missing.
template <class Column>
void FSCountBlock(const double* predictor, const FSCaseBlock& cases, std::size_t missing,
                  FSPredictorState& state) {
  if (cases.fbUnitWeights && state.HasWholeWeights()) {
    state.AddUnitCases(cases.fNCases - missing, missing);
  } else {
    state.SetTotalWeight(FSTotalWith(state.GetTotalWeight(), cases));
    state.AddValidCases(cases.fNCases - missing);
    for (std::size_t i = 0, left = missing; left > 0; ++i) {
      if (Column::IsValid(predictor[i])) continue;
      state.AddMissingWeight(cases.fpWeights[i]);
      --left;
    }
  }
  for (std::size_t i = 0; i < cases.fNCases && state.IsAllConstant(); ++i) {
    if (Column::IsValid(predictor[i])) state.Track(Column::Of(predictor[i]));
  }
  if (cases.fpHasValid == nullptr) return;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    if (missing == 0 || Column::IsValid(predictor[i])) cases.fpHasValid[i] = 1;
  }
}
