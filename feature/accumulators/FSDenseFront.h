// The small categories of a map, laid out as a plain array while a block is counted.
//
// Made from the map and put back into it at the end of the block: the map stays the truth, each
// value takes the same sums in the same order, and the loop over the cases neither searches nor
// branches on where an entry stands. Entries are those with a weight above zero.
#pragma once

#include <cstddef>
#include <vector>

#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/FSWalkBlock.h"

inline bool FSIsDense(int category) {
  return static_cast<unsigned>(category) < static_cast<unsigned>(kFSDenseSide);
}

inline double FSWeightOf(double count) { return count; }
inline double FSWeightOf(const FSGroupStats& group) { return group.fWeight; }

// One value per category, of an FSMapICnt or FSMapIStat.
template <class Map, class Value>
class FSDenseFront {
 public:
  explicit FSDenseFront(Map& map) : fMap(map) {
    for (const auto& [key, value] : map) {
      if (FSIsDense(key)) fValues[key] = value;
    }
  }

  Value& operator[](int category) { return fValues[category]; }

  void PutBack() {
    for (int key = 0; key < kFSDenseSide; ++key) {
      if (FSWeightOf(fValues[key]) > 0.0) fMap.Set(key, fValues[key]);
    }
  }

 private:
  Map& fMap;
  Value fValues[kFSDenseSide] = {};
};

// One count per pair of predictor and target category, the target's in 0 .. side - 1.
class FSDensePairs {
 public:
  FSDensePairs(FSMapPiCnt& map, int side)
      : fMap(map), fSide(side), fValues(static_cast<std::size_t>(kFSDenseSide * side)) {
    for (const auto& [key, value] : map) {
      if (FSIsDense(key.first) && key.second >= 0 && key.second < side) {
        At(key.first, key.second) = value;
      }
    }
  }

  double& At(int predictor, int target) {
    return fValues[static_cast<std::size_t>(predictor) * static_cast<std::size_t>(fSide) +
                   static_cast<std::size_t>(target)];
  }

  void PutBack() {
    for (int i = 0; i < kFSDenseSide; ++i) {
      for (int j = 0; j < fSide; ++j) {
        if (At(i, j) > 0.0) fMap.Set({i, j}, At(i, j));
      }
    }
  }

 private:
  FSMapPiCnt& fMap;
  int fSide;
  std::vector<double> fValues;
};
