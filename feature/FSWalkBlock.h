// The loop that every accumulator runs over a block: one piece, so that blocks treat missing values
// and weights as single cases do.
#pragma once

#include <cstddef>

#include "common/MissingValue.h"
#include "feature/FSCaseBlock.h"
#include "feature/FSPredictorState.h"

enum class FSPredictorKind { kCategorical, kContinuous };

template <FSPredictorKind kKind>
bool FSIsValid(double value) {
  if (MCMV::IsMissing(value)) return false;
  return kKind == FSPredictorKind::kContinuous || FSCategory(value) != -1;
}

// Calls take(state, i, value, weight) for each valid value and counts the others as missing. The
// state is worked on in a local copy, which stays in registers.
template <FSPredictorKind kKind, class Take>
void FSWalkBlock(const double* predictor, const FSCaseBlock& cases, FSPredictorState& shared,
                 Take take) {
  FSPredictorState state = shared;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    const double weight = cases.fpWeights[i];
    if (!FSIsValid<kKind>(value)) {
      state.AddMissing(weight);
      continue;
    }
    if (cases.fpHasValid != nullptr) cases.fpHasValid[i] = 1;
    take(state, i, value, weight);
  }
  shared = state;
}
