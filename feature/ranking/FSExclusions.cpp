#include "feature/ranking/FSExclusions.h"

#include <algorithm>

void FSExclusions::Add(const std::vector<std::pair<int, int>>& found) {
  std::vector<std::pair<int, int>> all(found);
  for (std::size_t k = 0; k < fIndices.size(); ++k) all.emplace_back(fIndices[k], fReasons[k]);
  std::sort(all.begin(), all.end());
  fIndices.clear();
  fReasons.clear();
  for (const auto& [index, reason] : all) {
    fIndices.push_back(index);
    fReasons.push_back(reason);
  }
}

bool FSExclusions::Contains(int predictor) const {
  return std::binary_search(fIndices.begin(), fIndices.end(), predictor);
}
