// The loops over the cells of a data pass, for the instructions of the machine.
#pragma once

#include <cstddef>
#include <cstdint>

#include "feature/accumulators/FSLanes.h"
#include "feature/accumulators/FSRun.h"
#include "feature/accumulators/FSStepSums.h"

struct FSLoops {
  // Adds a run of n values, from lane 0 on. REQUIRES: n mod 8 = 0.
  void (*fAddSteps)(std::size_t n, const FSRun& run, double origin, FSStepSums& sums);

  // Adds steps of x, their squares, and their products with steps of y that are there already, from
  // lane 0 on; weights may be null for ones. REQUIRES: n mod 8 = 0.
  void (*fAddProducts)(std::size_t n, const double* x, double origin, const double* stepsY,
                       const double* weights, FSLanes& sums, FSLanes& squares, FSLanes& products);

  // The small categories that values truncate to; kFSSmallCategories for all others.
  void (*fFindPlaces)(const double* values, std::size_t n, std::uint8_t* places);

  // FSCategory of values, none of which is missing.
  void (*fTakeCategories)(const double* values, std::size_t n, std::int32_t* categories);

  // The highest of them, -1 without any; also -1 when one is negative, missing, or beyond the range
  // of an int.
  int (*fFindHighest)(const double* values, std::size_t n);

  // Whether all values are ordinary for FSScale.
  bool (*fAreOrdinary)(const double* values, std::size_t n);

  // What weights have in common.
  FSWeightTraits (*fLookAtWeights)(const double* weights, std::size_t n);

  // Counts pairs of predictor[i], truncated, and targets[i] in cell row << shift + target of one of
  // `tables` tables in turn (MCCommon::CountInTurn). Values that are not in 0 .. rows - 1 when
  // truncated are counted in row `rows`.
  void (*fCountPairs)(const double* predictor, const std::int32_t* targets, std::size_t n, int rows,
                      int shift, std::size_t tables, std::size_t cells, std::uint32_t* counts);

  // For the instructions in use.
  static const FSLoops& InUse();
};
