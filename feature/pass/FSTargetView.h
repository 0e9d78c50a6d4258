// The target of a block as a worker sees it, who makes it from the values for itself: that is
// sooner done than fetched from another processor.
#pragma once

#include <vector>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSCategorySort.h"

class FSTargetView {
 public:
  // Shows the cases of a block their categories, and the order of those; their steps, where it has
  // pieces. That holds until the next call.
  void ShowCategories(FSCaseBlock& block);
  void ShowSteps(FSCaseBlock& block);

 private:
  std::vector<int> fCategories;
  FSCategorySort fSort;
  std::vector<double> fSteps;
};
