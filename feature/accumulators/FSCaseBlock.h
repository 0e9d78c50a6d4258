// The cases of a block that take part in a data pass, as every predictor sees them: all have a
// valid target (where there is one) and a weight above zero.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

// A categorical value is the case value truncated toward zero; values beyond the range of an int
// become its ends.
inline int FSCategory(double value) {
  constexpr double kLow = std::numeric_limits<int>::min();
  constexpr double kHigh = std::numeric_limits<int>::max();
  return static_cast<int>(value < kLow ? kLow : (value > kHigh ? kHigh : value));
}

struct FSCaseBlock {
  std::size_t fNCases = 0;
  const double* fpTargets = nullptr;        // null in a pass without target
  const int* fpTargetCategories = nullptr;  // null unless the target is categorical
  // Target categories lie in 0 .. fTargetSide - 1; 0 when some do not, or are not few.
  int fTargetSide = 0;
  const double* fpWeights = nullptr;
  // All weights of the pass so far are whole numbers, few enough for any sum of them to be exact.
  bool fbWholeWeights = false;
  // W, the weight of all cases of the pass before each case, and the share w / (W + w) of the case
  // in an overall mean: what a predictor without missing values has no need to divide for.
  const double* fpWeightsBefore = nullptr;
  const double* fpShares = nullptr;
  std::uint8_t* fpHasValid = nullptr;  // set to 1 for each case with a valid predictor value;
                                       // null when all are set already
};
