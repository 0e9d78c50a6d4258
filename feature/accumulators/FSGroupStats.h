// Weight, mean, squared deviations and variance of the values of one group.
#pragma once

#include "feature/accumulators/FSMoments.h"

struct FSGroupStats {
  double fWeight = 0.0;
  FSMean fMean;
  double fSquaredDeviations = 0.0;
  double fVariance = 0.0;

  // Takes in another part of the group; one value x of weight w is {w, {x}}. REQUIRES: a weight
  // above 0.
  void Take(const FSGroupStats& part) {
    if (fWeight == 0.0) {
      fMean = part.fMean;
    } else {
      const double distance = fMean.DistanceTo(part.fMean);
      const double step = distance * (part.fWeight / (fWeight + part.fWeight));
      fSquaredDeviations += distance * (fWeight * step);
      fMean.Move(step);
    }
    fWeight += part.fWeight;
    fSquaredDeviations += part.fSquaredDeviations;
  }

  void ComputeVariance() { fVariance = FSVariance(fSquaredDeviations, fWeight, 0.0); }

  // Turns the moments of values into those of values divided by 2^by.
  void Coarsen(int by) {
    fMean.Coarsen(by);
    fSquaredDeviations = std::ldexp(fSquaredDeviations, -2 * by);
  }

  bool operator==(const FSGroupStats& other) const {
    return fWeight == other.fWeight && fMean.fValue == other.fMean.fValue &&
           fMean.fRest == other.fMean.fRest && fSquaredDeviations == other.fSquaredDeviations &&
           fVariance == other.fVariance;
  }
};
