#include "naivebayes/store/NBCodeBlock.h"

#include <algorithm>
#include <limits>

std::int32_t CategoryOf(double value, double offset) {
  const bool isCode = value >= 0 && value <= std::numeric_limits<double>::max();
  return isCode ? static_cast<std::int32_t>(value + offset) : -1;
}

void NBCodeBlock::Take(const NBCodeBlock& whole, std::size_t first, std::size_t most) {
  fCases = std::min(most, whole.fCases - first);
  fpTargets = whole.fpTargets + first;
  fpWeights = whole.fpWeights + first;
  fvCodes.clear();
  for (const NBCodes& codes : whole.fvCodes) {
    fvCodes.push_back(
        std::visit([first](const auto* column) -> NBCodes { return column + first; }, codes));
  }
}
