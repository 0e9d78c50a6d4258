// Sums of weighted steps of values from an origin, in lanes: w, w * step, w * (step * step).
#pragma once

#include <cstddef>

#include "feature/accumulators/FSLanes.h"
#include "feature/accumulators/FSRun.h"

struct FSStepSums {
  FSLanes fWeights;
  FSLanes fSums;
  FSLanes fSquares;

  void Add(int lane, double step, double weight) {
    fWeights[lane] += weight;
    fSums[lane] += weight * step;
    fSquares[lane] += weight * (step * step);
  }

  // Adds n values that come behind so many others.
  void AddRun(int before, std::size_t n, const FSRun& run, double origin);

  void Coarsen(int by) {
    fSums.Coarsen(by);
    fSquares.Coarsen(2 * by);
  }
};
