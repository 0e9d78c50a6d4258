// Weighted counts of pairs of small categories, as a plain array that grows with the categories
// seen.
#pragma once

#include <cstddef>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"

class FSCrossTable {
 public:
  // Counts a predictor with the target in the cases of a block. Returns how many values are no
  // category that the table has room for: they are not counted. REQUIRES: fTargetSide > 0; the
  // weights counted so far are whole if all of the pass are 1.
  std::size_t AddBlock(const double* predictor, const FSCaseBlock& cases);

  // Whether a value is a category that the table has room for.
  bool Holds(double value) const { return value > -1.0 && value < fRows; }

  // Counts one pair, making room for it. REQUIRES: both are small.
  void Add(int predictor, int target, double weight) {
    if (predictor >= fRows || target >= fSide) [[unlikely]]
      MakeRoom(predictor, target);
    fCounts[At(predictor, target)] += weight;
  }

  // Gives out count(predictor, target, weight) for each pair that occurred, and forgets them.
  template <class Count>
  void Empty(Count count) {
    for (int i = 0; i < fRows; ++i) {
      for (int j = 0; j < fSide; ++j) {
        if (const double weight = fCounts[At(i, j)]; weight > 0.0) count(i, j, weight);
      }
    }
    *this = {};
  }

 private:
  std::size_t At(int predictor, int target) const {
    return static_cast<std::size_t>((predictor << fShift) + target);
  }
  void MakeRoom(int predictor, int target);
  void MakeRoomFor(const double* predictor, const FSCaseBlock& cases);
  std::size_t AddUnits(const double* predictor, const FSCaseBlock& cases, std::size_t tables);
  std::size_t AddWeights(const double* predictor, const FSCaseBlock& cases);
  void Grow(int rows, int side);

  int fRows = 0;
  int fSide = 0;  // 2^fShift, or 0 at first
  int fShift = 0;
  // Row by row; one more takes what is not counted.
  std::vector<double> fCounts;
};
