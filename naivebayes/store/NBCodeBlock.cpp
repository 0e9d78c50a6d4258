#include "naivebayes/store/NBCodeBlock.h"

#include <limits>

#include "common/MissingValue.h"

std::int32_t CategoryOf(double value, double offset) {
  const bool isCode = value >= 0 && value <= std::numeric_limits<double>::max();
  return isCode ? static_cast<std::int32_t>(value + offset) : -1;
}

void NBCodeBlock::Load(const MCCommon::RecordBlock& block, bool hasWeight, double offset) {
  fvTargets.clear();
  fvWeights.clear();
  for (auto& column : fvCodes) column.clear();
  Append(block, hasWeight, offset);
}

void NBCodeBlock::Append(const MCCommon::RecordBlock& block, bool hasWeight, double offset) {
  if (block.Cases() == 0) return;
  const std::size_t first = hasWeight ? 2 : 1;
  fvCodes.resize(block.Columns() - first);
  fvAccepted.clear();
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    const std::int32_t target = CategoryOf(block.Column(0)[i], offset);
    const double weight = hasWeight ? block.Column(1)[i] : 1.0;
    if (target < 0 || MCMV::IsMissing(weight) || weight <= 0) continue;
    fvAccepted.push_back(i);
    fvTargets.push_back(target);
    fvWeights.push_back(weight);
  }
  for (std::size_t j = 0; j < fvCodes.size(); ++j) {
    const double* values = block.Column(first + j);
    auto& codes = fvCodes[j];
    const std::size_t start = codes.size();
    codes.resize(start + fvAccepted.size());
    if (fvAccepted.size() == block.Cases()) {
      for (std::size_t i = 0; i < block.Cases(); ++i) {
        codes[start + i] = CategoryOf(values[i], offset);
      }
      continue;
    }
    for (std::size_t n = 0; n < fvAccepted.size(); ++n) {
      codes[start + n] = CategoryOf(values[fvAccepted[n]], offset);
    }
  }
}
