#include "common/evaluation/Repeated.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "common/evaluation/Intervals.h"

namespace MCCommon {

namespace {

// But for missing ones, of which there are not only such.
bool AreEqual(const std::vector<double>& values) {
  const auto isThere = [](double value) { return !MCMV::IsMissing(value); };
  const double first = *std::ranges::find_if(values, isThere);
  return std::ranges::all_of(values,
                             [&](double value) { return !isThere(value) || value == first; });
}

}  // namespace

RepeatedMeasure Summarize(const std::vector<double>& values, double testShare) {
  RepeatedMeasure summary;
  double sum = 0.0;
  for (const double value : values) {
    if (MCMV::IsMissing(value)) continue;
    sum += value;
    ++summary.fNFolds;
  }
  if (summary.fNFolds == 0) return summary;
  const double mean = sum / summary.fNFolds;
  summary.fMean.fValue = mean;
  if (summary.fNFolds < 2) return summary;
  if (AreEqual(values)) {
    summary.fDeviation = 0.0;
    return summary;
  }
  double squares = 0.0;
  for (const double value : values) {
    if (!MCMV::IsMissing(value)) squares += (value - mean) * (value - mean);
  }
  summary.fDeviation = std::sqrt(squares / (summary.fNFolds - 1));
  const double half = Intervals::Student(summary.fNFolds - 1) * summary.fDeviation *
                      std::sqrt(1.0 / summary.fNFolds + testShare);
  summary.fMean = {mean, mean - half, mean + half};
  return summary;
}

Estimate StabilityOf(const std::vector<std::vector<int>>& selections, int candidates) {
  const auto n = static_cast<double>(selections.size());
  const double p = candidates;
  if (selections.size() < 2 || candidates < 1) return {};
  std::vector<double> shares(static_cast<std::size_t>(candidates), 0.0);
  double mean = 0.0;
  for (const std::vector<int>& selected : selections) {
    for (const int f : selected) shares[static_cast<std::size_t>(f)] += 1.0;
    mean += static_cast<double>(selected.size());
  }
  // Whole numbers, so that none and all are known for certain.
  if (!(mean > 0.0) || !(mean < n * p)) return {};
  mean /= n;
  for (double& share : shares) share /= n;
  const double chance = mean / p * (1.0 - mean / p);
  double spread = 0.0;
  for (const double share : shares) spread += n / (n - 1.0) * share * (1.0 - share) / p;
  const double stability = 1.0 - spread / chance;
  double sum = 0.0;
  double squares = 0.0;
  for (const std::vector<int>& selected : selections) {
    const auto size = static_cast<double>(selected.size());
    double overlap = 0.0;
    for (const int f : selected) overlap += shares[static_cast<std::size_t>(f)] / p;
    const double own =
        (overlap - size * mean / (p * p) +
         stability / 2.0 * (2.0 * mean * size / (p * p) - size / p - mean / p + 1.0)) /
        chance;
    sum += own;
    squares += own * own;
  }
  const double variance = 4.0 / (n * n) * (squares - sum * sum / n);
  if (!(variance > 0.0)) return {.fValue = stability};
  const double half = Intervals::kNormal * std::sqrt(variance);
  return {stability, stability - half, std::min(stability + half, 1.0)};
}

}  // namespace MCCommon
