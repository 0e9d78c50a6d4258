// The categories of one variable in another component, read as this component's: one map of
// FSCategoryMaps at work.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "feature/accumulators/FSCategoryMaps.h"

class FSRecode {
 public:
  // The map is borrowed. Without one, or with an empty one, codes stay as they are.
  explicit FSRecode(const std::vector<int>* map = nullptr)
      : fpMap(map != nullptr && !map->empty() ? map : nullptr) {}

  // Whether a code has a translation.
  bool Knows(int code) const {
    return fpMap == nullptr || (code >= 0 && static_cast<std::size_t>(code) < fpMap->size() &&
                                (*fpMap)[static_cast<std::size_t>(code)] != -1);
  }
  // The translation. A code without one stays as it is.
  int operator()(int code) const {
    return fpMap != nullptr && Knows(code) ? (*fpMap)[static_cast<std::size_t>(code)] : code;
  }

  // Whether no two codes have the same translation.
  bool IsUnambiguous() const {
    if (fpMap == nullptr) return true;
    std::vector<int> codes = *fpMap;
    codes.erase(std::remove(codes.begin(), codes.end(), -1), codes.end());
    std::sort(codes.begin(), codes.end());
    return std::adjacent_find(codes.begin(), codes.end()) == codes.end();
  }

 private:
  const std::vector<int>* fpMap;
};

// The recodes of a set of maps; without maps, codes stay as they are.
inline FSRecode FSTargetRecode(const FSCategoryMaps* maps) {
  return maps == nullptr ? FSRecode() : FSRecode(&maps->fTarget);
}
inline FSRecode FSPredictorRecode(const FSCategoryMaps* maps, std::size_t predictor) {
  if (maps == nullptr || maps->fPredictors.empty()) return FSRecode();
  return FSRecode(&maps->fPredictors[predictor]);
}
