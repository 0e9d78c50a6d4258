// The code of a category that a caller hands over as a number.
#pragma once

#include <cstdint>
#include <limits>

#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/store/NBCodeBlock.h"

// Neither missing nor within the variable's categories.
inline constexpr std::int32_t kNBOutOfRange = -2;

// Values from 0 up to below `end`, rounded; kNBOutOfRange for those above; missing for all others.
// No branch, and the value is made fit for an integer before it becomes one.
inline std::int32_t EncodeCategory(double value, double end) {
  const double other = value >= 0 && value <= std::numeric_limits<double>::max()
                           ? kNBOutOfRange
                           : INBEncoder::kMissingCode;
  const double code = value >= 0 && value < end ? value + NBCodeBlock::kCountingOffset : other;
  return static_cast<std::int32_t>(code);
}
