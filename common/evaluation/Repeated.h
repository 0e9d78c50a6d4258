// What several evaluations, each of a fold left out, say together; and how much what was selected
// changes from one to the next.
#pragma once

#include <vector>

#include "common/evaluation/Evaluation.h"

namespace MCCommon {

// A measure over evaluations.
struct RepeatedMeasure {
  // With an interval for training sets that overlap (Nadeau and Bengio); none where all are equal,
  // since that says nothing of how far they vary.
  Estimate fMean;
  double fDeviation = MCMV::gMissingValue;  // standard deviation
  int fNFolds = 0;                          // that have the measure
};

// `testShare`: cases of a fold by those that it was trained on.
RepeatedMeasure Summarize(const std::vector<double>& values, double testShare);

// The stability of selections among so many candidates, each given as those selected (numbers below
// `candidates`): 1 when all are the same, 0 on average when they are drawn at random (Nogueira,
// Sechidis and Brown). Missing with fewer than two selections, or when none or all are selected in
// all.
Estimate StabilityOf(const std::vector<std::vector<int>>& selections, int candidates);

}  // namespace MCCommon
