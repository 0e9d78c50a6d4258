#include "operations/QuantileSketch.h"

#include <algorithm>
#include <cmath>

#include "common/MissingValue.h"

namespace PredSelect {

void QuantileSketch::Add(double value, std::int64_t count) {
  for (std::size_t level = 0; count > 0; ++level, count >>= 1) {
    if ((count & 1) != 0) Put(level, value);
  }
}

void QuantileSketch::Put(std::size_t level, double value) {
  if (fLevels.size() <= level) fLevels.resize(level + 1);
  fLevels[level].fValues.push_back(value);
  if (fLevels[level].fValues.size() >= kFull) Thin(level);
}

void QuantileSketch::Thin(std::size_t level) {
  std::vector<double> values = std::move(fLevels[level].fValues);
  fLevels[level].fValues.clear();
  std::sort(values.begin(), values.end());
  const std::size_t first = fLevels[level].fbSecond ? 1 : 0;
  fLevels[level].fbSecond = !fLevels[level].fbSecond;
  for (std::size_t i = first; i < values.size(); i += 2) Put(level + 1, values[i]);
}

std::vector<std::pair<double, std::int64_t>> QuantileSketch::Weights() const {
  std::vector<std::pair<double, std::int64_t>> weights;
  for (std::size_t level = 0; level < fLevels.size(); ++level) {
    for (const double value : fLevels[level].fValues) {
      weights.emplace_back(value, std::int64_t{1} << level);
    }
  }
  std::sort(weights.begin(), weights.end());
  return weights;
}

Distribution::Distribution(std::vector<std::pair<double, std::int64_t>> counts)
    : fCounts(std::move(counts)) {
  for (const auto& [value, count] : fCounts) fTotal += count;
}

double Distribution::AtRank(std::int64_t rank) const {
  for (const auto& [value, count] : fCounts) {
    if (rank < count) return value;
    rank -= count;
  }
  return fCounts.back().first;
}

double Distribution::Quantile(double share) const {
  if (fTotal == 0) return MCMV::gMissingValue;
  const double place = share * static_cast<double>(fTotal - 1);
  const auto rank = static_cast<std::int64_t>(place);
  const double below = AtRank(rank);
  const double part = place - static_cast<double>(rank);
  // Not the difference of the two, which may be beyond any number.
  return part == 0.0 ? below : (1.0 - part) * below + part * AtRank(rank + 1);
}

std::vector<double> Distribution::Histogram(std::size_t n, double least, double greatest) const {
  std::vector<double> bins(n, 0.0);
  const auto wanted = static_cast<double>(n);
  // The whole range, or its product with n, may be beyond any number; a bin's width may be below.
  const double scale = std::isfinite((greatest - least) * wanted) ? 1.0 : 0x1p-64;
  const double range = scale * greatest - scale * least;
  for (const auto& [value, count] : fCounts) {
    const double above = scale * value - scale * least;
    const double place = range > 0.0 ? above * wanted / range : 0.0;
    const double bin = std::clamp(std::floor(place), 0.0, wanted - 1.0);
    bins[static_cast<std::size_t>(bin)] += static_cast<double>(count);
  }
  return bins;
}

}  // namespace PredSelect
