// The latest values of a group, of small weights, as sums of their steps from the first of them.
//
// A step is nearly always exact, and the squares cannot swamp the deviations: the first value is
// one of the group's own, so that of n values of weight 1 the squares are n times the squared
// deviations at most. A first value of little weight beside the others would leave more to cancel,
// so the weights must be alike. After kMost values the sums are closed, that is, turned into
// moments.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "feature/accumulators/FSGroupStats.h"
#include "feature/accumulators/FSLanes.h"

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
    const int lane = fN % FSLanes::kCount;
    const double step = x - fOrigin;
    fSums[lane] += weight * step;
    fSquares[lane] += weight * (step * step);
    fWeight += weight;
    ++fN;
  }

  // Adds at(0), at(1), ..., of weight 1, as long as there are values and room; returns how many. 0,
  // and nothing has changed, when one of them is missing, or is too large to be summed without a
  // look at the scale.
  template <class At>
  std::size_t AddRun(std::size_t n, At at) {
    const std::size_t most = std::min(n, static_cast<std::size_t>(kMost - fN));
    FSOpenGroup next = *this;
    std::size_t k = 0;
    for (; k < most && (next.fN == 0 || next.fN % FSLanes::kCount != 0); ++k) next.Add(at(k), 1.0);
    const std::size_t whole = (most - k) / FSLanes::kCount * FSLanes::kCount;
    FSSumSteps(
        whole, [&](std::size_t i) { return at(k + i); }, next.fOrigin, next.fSums, next.fSquares);
    next.fN += static_cast<int>(whole);
    next.fWeight += static_cast<double>(whole);
    for (k += whole; k < most; ++k) next.Add(at(k), 1.0);
    if (!FSAreOrdinary(next.fOrigin, next.fSquares.Sum())) return 0;
    *this = next;
    return most;
  }

  double GetOrigin() const { return fOrigin; }
  const FSLanes& GetSums() const { return fSums; }
  const FSLanes& GetSquares() const { return fSquares; }

  // The moments of the values; none are left. REQUIRES: not empty.
  FSGroupStats Close() {
    FSGroupStats closed;
    closed.fWeight = fWeight;
    closed.fMean.fValue = fOrigin;
    const double sum = fSums.Sum();
    closed.fMean.Move(sum / closed.fWeight);
    closed.fSquaredDeviations = std::max(fSquares.Sum() - sum * (sum / closed.fWeight), 0.0);
    *this = {};
    return closed;
  }

  void Coarsen(int by) {
    fOrigin = std::ldexp(fOrigin, -by);
    fSums.Coarsen(by);
    fSquares.Coarsen(2 * by);
  }

 private:
  int fN = 0;
  double fWeight = 0.0;
  double fOrigin = 0.0;
  FSLanes fSums;
  FSLanes fSquares;
};
