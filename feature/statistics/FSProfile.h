// What one predictor looks like beside the target: what the pass has counted of both, for charts.
//
// Weights of cases in which both are valid. Which part is filled depends on the kinds of predictor
// and target; a deleted predictor, and a pass without a target, fill none.
#pragma once

#include <vector>

#include "common/MissingValue.h"

struct FSProfile {
  // Two categorical variables: every pair of categories that occurred, in ascending order.
  struct Pair {
    int fPredictor;
    int fTarget;
    double fWeight;
  };
  // One categorical and one continuous variable: the latter by category of the former, in ascending
  // order.
  struct Group {
    int fCategory;
    double fWeight;
    double fMean;
    double fDeviation;  // 0 where the weight is not above 1
  };
  // Two continuous variables.
  struct Line {
    double fWeight = 0.0;
    double fMeanPredictor = MCMV::gMissingValue;
    double fDeviationPredictor = MCMV::gMissingValue;
    double fMeanTarget = MCMV::gMissingValue;
    double fDeviationTarget = MCMV::gMissingValue;
    double fCorrelation = MCMV::gMissingValue;
  };

  std::vector<Pair> fPairs;
  std::vector<Group> fGroups;
  Line fLine;
  double fMissing = 0.0;  // weight of the cases without a value of the predictor
};
