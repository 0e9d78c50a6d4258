#include "naivebayes/store/NBCodeBlock.h"

#include <limits>

std::int32_t CategoryOf(double value, double offset) {
  const bool isCode = value >= 0 && value <= std::numeric_limits<double>::max();
  return isCode ? static_cast<std::int32_t>(value + offset) : -1;
}
