// The latest values of a group, of small weights, as sums of their steps from the first of them.
//
// A step is nearly always exact, and the squares cannot swamp the deviations: the first value is
// one of the group's own, so that of n values of weight 1 the squares are n times the squared
// deviations at most. A first value of little weight beside the others would leave more to cancel,
// so the weights must be alike. After kMost values the sums are closed, that is, turned into
// moments.
#pragma once

#include <cmath>
#include <cstddef>

#include "feature/accumulators/FSGroupStats.h"
#include "feature/accumulators/FSRun.h"
#include "feature/accumulators/FSStepSums.h"

inline bool FSIsSmallWeight(double weight) { return weight >= 1.0 && weight <= 64.0; }

// Whether sums of steps from an origin hold ordinary values alone: none that is missing, none that
// a scale of ordinary values may not fit.
inline bool FSAreOrdinary(double origin, double squares) {
  return std::abs(origin) <= 0x1p390 && squares <= 0x1p780;
}

class FSOpenGroup {
 public:
  static constexpr int kMost = 1024;

  bool IsEmpty() const { return fN == 0; }
  bool IsFull() const { return fN == kMost; }

  // REQUIRES: not full, a small weight.
  void Add(double x, double weight) {
    if (fN == 0) fOrigin = x;
    fSums.Add(fN % FSLanes::kCount, x - fOrigin, weight);
    ++fN;
  }

  // Adds values of a run, of small weights, as long as there are values and room; returns how many.
  // 0, and nothing has changed, when one of them is missing, or is too large to be summed without a
  // look at the scale.
  std::size_t AddRun(std::size_t n, const FSRun& run);

  double GetOrigin() const { return fOrigin; }
  const FSStepSums& GetSums() const { return fSums; }

  // The moments of the values; none are left. REQUIRES: not empty.
  FSGroupStats Close();

  void Coarsen(int by) {
    fOrigin = std::ldexp(fOrigin, -by);
    fSums.Coarsen(by);
  }

 private:
  int fN = 0;
  double fOrigin = 0.0;
  FSStepSums fSums;
};
