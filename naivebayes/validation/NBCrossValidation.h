// A cross-validation that goes with a selection: what is asked, and what came of it.
//
// The cases are dealt into folds, class by class; each fold in turn is held out, predictors are
// selected and a model is built on the other cases, and the fold is predicted. The folds share the
// cases' codes, so that bins and categories are those of all cases, as they are for test cases.
#pragma once

#include <cstdint>
#include <vector>

#include "common/evaluation/Evaluation.h"

// One fold held out.
struct NBFoldRun {
  int fRepeat = 0;
  int fFold = 0;
  double fTrainingWeight = 0.0;
  double fTestWeight = 0.0;
  std::vector<int> fvChosen;  // variable indices in order of entry, forced ones first
  MCCommon::Evaluation fEvaluation;
};

struct NBCrossValidation {
  static constexpr int kMostFolds = 1000;
  static constexpr int kMostRepeats = 1000;

  int fNFolds = 10;   // 2 to kMostFolds
  int fNRepeats = 1;  // up to kMostRepeats; each deals the cases anew
  std::uint64_t fSeed = 1;

  std::vector<int> fvCandidates{};  // variable indices
  std::vector<NBFoldRun> fvRuns{};  // repeat by repeat; empty where it could not be done
};
