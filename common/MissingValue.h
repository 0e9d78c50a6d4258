// The one missing-value marker of the system, and the one test for it.
//
// A numeric cell without a value, and every statistic that could not be computed, holds the lowest
// finite double. NaN and infinities that reach the system in data count as missing too, so code
// that reads data asks IsMissing() and never compares with the marker itself.
#pragma once

#include <limits>

namespace MCMV {

// -1.7976931348623157e308.
inline constexpr double gMissingValue = std::numeric_limits<double>::lowest();

// True for the marker, for NaN and for both infinities.
constexpr bool IsMissing(double value) {
  return !(value > gMissingValue && value <= std::numeric_limits<double>::max());
}

}  // namespace MCMV

inline constexpr double KOVA_SystemMissing = MCMV::gMissingValue;
inline constexpr double MCMV_gMissingValue = MCMV::gMissingValue;
