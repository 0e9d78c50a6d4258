// Weight, mean, squared deviations and variance of a value per category, in category order.
#pragma once

#include "feature/FSMoments.h"
#include "feature/FSSortedMap.h"

struct FSGroupStats {
  double fWeight = 0.0;
  double fMean = 0.0;
  double fSquaredDeviations = 0.0;
  double fVariance = 0.0;
};

class FSMapIStat : public FSSortedMap<int, FSGroupStats> {
 public:
  using stats = FSGroupStats;

  // Takes a value x with weight w into the category. A weight that is not positive is ignored
  // (false). True when the category was there, false when it was entered.
  bool Accumulate(int key, double x, double w) {
    if (!(w > 0.0)) return false;
    const auto [at, found] = Place(key, {w, x, 0.0, 0.0});
    if (!found) return false;
    stats& group = ValueAt(at);
    const double step = FSMeanStep(x, group.fMean, group.fWeight, w);
    group.fMean += step;
    group.fSquaredDeviations += FSDeviationStep(step, step, group.fWeight, w);
    group.fWeight += w;
    return true;
  }

  // Squared deviations / (weight - 1) for every category, 0 where the weight is not above 1.
  void ComputeVariances() {
    for (Entry& entry : Entries()) {
      stats& group = entry.second;
      group.fVariance = FSVariance(group.fSquaredDeviations, group.fWeight, 0.0);
    }
  }
};
