// The tables of a cross-validation: CrossValidation and SelectionStability, and for programs Folds.
#pragma once

#include <vector>

#include "common/evaluation/Evaluation.h"
#include "host/output/OutputText.h"

namespace MCHost {

// A fold left out.
struct ShownFold {
  int fRepeat = 0;  // from 0
  int fFold = 0;
  double fTestShare = 0.0;      // cases of the fold by those that it was trained on
  std::vector<int> fvChosen{};  // candidates, in order of entry
  MCCommon::Evaluation fEvaluation{};
};

// `candidates`: what a selection could choose; there is no table of their stability without any.
// `isCalibrated`: the model itself, which those of the folds are not.
// REQUIRES: a session is installed for this thread; there is a fold.
void ShowCrossValidation(const std::vector<ShownFold>& folds,
                         const std::vector<OutputText>& candidates, bool isCalibrated);

}  // namespace MCHost
