// What training has counted for a model: all that its estimates come from.
#pragma once

#include <vector>

struct NBModelCounts {
  int fNRecords = 0;  // training records, and their weight
  double fWeight = 0;
  std::vector<double> fTarget;               // weight by target category
  std::vector<std::vector<double>> fInputs;  // for each input of the list, row by row, the target
                                             // categories side by side
};
