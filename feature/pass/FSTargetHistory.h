// What a pass knows of its target from block to block, and all predictors share: whether its
// categories have been few, and sums of a continuous one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSOpenGroup.h"

class FSTargetHistory {
 public:
  // Takes in the cases of a block, in the order of the pass. What the block is shown holds until
  // the next call. `highest` is their highest category, -1 where one is negative; `ordinary` says
  // whether all values are, for FSScale.
  void TakeCategories(FSCaseBlock& block, int highest);
  void TakeValues(FSCaseBlock& block, bool ordinary);

 private:
  std::size_t AddPiece(const FSCaseBlock& block, std::size_t begin);

  // A categorical target.
  int fSide = 0;
  bool fbFewCategories = true;
  // A continuous one.
  std::int64_t fNCases = 0;
  bool fbOrdinary = true;      // all values so far
  bool fbSmallWeights = true;  // all weights so far
  FSOpenGroup fOpen;
  std::vector<FSTargetPiece> fPieces;
};
