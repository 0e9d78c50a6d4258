// The latest pairs of two variables, of small weights, as sums of their steps from the first of
// them: see FSOpenGroup.
#pragma once

#include <algorithm>
#include <cstddef>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSOpenGroup.h"
#include "feature/accumulators/FSPairStats.h"

class FSOpenPair {
 public:
  static constexpr int kMost = FSOpenGroup::kMost;

  bool IsEmpty() const { return fN == 0; }
  bool IsFull() const { return fN == kMost; }

  // REQUIRES: not full, a small weight.
  void Add(double x, double y, double weight) {
    if (fN == 0) Start(x, y);
    const int lane = fN % FSLanes::kCount;
    const double dy = y - fOriginY;
    AddX(lane, x, dy, weight);
    fY.Add(lane, dy, weight);
    ++fN;
  }

  // Adds pairs of small weights as long as there are some, and room; returns how many.
  // 0, and nothing has changed, when an x is missing, or a value is too large to be summed without
  // a look at the scale. REQUIRES: there are some, and room.
  std::size_t AddRun(std::size_t n, const double* x, const double* y, const double* weights);

  // The same for a whole piece of the target, whose steps and sums all predictors share; weights
  // may be null for ones. REQUIRES: the pairs so far were all cases of the target's sums.
  bool AddPiece(const FSTargetPiece& piece, const double* x, const double* stepsY,
                const double* weights);

  // The moments of the pairs; none are left. REQUIRES: not empty.
  FSPairStats Close();

  void Coarsen(int byX, int byY);

 private:
  void Start(double x, double y) {
    fOriginX = x;
    fOriginY = y;
  }
  void AddX(int lane, double x, double dy, double weight) {
    const double dx = x - fOriginX;
    fSumsX[lane] += weight * dx;
    fSquaresX[lane] += weight * (dx * dx);
    fProducts[lane] += weight * (dx * dy);
  }

  // Adds what x has a part in, for pairs whose steps of y are known, from the number of pairs on.
  void AddProducts(std::size_t n, const double* x, const double* stepsY, const double* weights);

  int fN = 0;
  double fOriginX = 0.0;
  double fOriginY = 0.0;
  FSLanes fSumsX;
  FSLanes fSquaresX;
  FSLanes fProducts;
  FSStepSums fY;  // and the weights
};
