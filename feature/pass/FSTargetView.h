// What all predictors share of the target in a block: which cases are of which category; the steps
// and sums of a continuous target. Worked out once a block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSCategorySort.h"
#include "feature/accumulators/FSOpenGroup.h"

class FSTargetView {
 public:
  // Of the cases of a block, in the order of the pass. What the block is shown holds until the next
  // call.
  void ShowCategories(FSCaseBlock& block);
  void ShowValues(FSCaseBlock& block);

 private:
  std::size_t AddPiece(const FSCaseBlock& block, std::size_t begin);

  // A categorical target.
  FSCategorySort fSort;
  int fSide = 0;
  bool fbFewCategories = true;
  // A continuous one.
  std::int64_t fNCases = 0;
  bool fbOrdinary = true;      // all values so far
  bool fbSmallWeights = true;  // all weights so far
  FSOpenGroup fOpen;
  std::vector<double> fSteps;
  std::vector<FSTargetPiece> fPieces;
};
