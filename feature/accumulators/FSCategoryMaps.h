// How the category codes of one component read in another.
//
// Codes are often numbered by first appearance, so the same category may have different codes in
// different parts of the data. A map gives, at the position of the other component's code, the code
// here; -1 where there is none. An empty map means that both use the same codes. No two codes of a
// map may have the same translation.
#pragma once

#include <vector>

struct FSCategoryMaps {
  std::vector<int> fTarget;
  // One map per predictor (continuous ones need none), or no maps at all.
  std::vector<std::vector<int>> fPredictors;
};
