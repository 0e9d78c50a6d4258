#include "naivebayes/model/NBOutputStatistics.h"

#include <algorithm>
#include <utility>

NBOutputStatistics::NBOutputStatistics(int targetCategories) { Reset(targetCategories); }

void NBOutputStatistics::Reset(int targetCategories) {
  fNCategories = targetCategories;
  fvMatrix.assign(static_cast<std::size_t>(targetCategories) * targetCategories, 0.0);
  fTotalWeight = fMisclassified = 0;
}

void NBOutputStatistics::Grow(int targetCategories) {
  if (targetCategories <= fNCategories) return;
  const auto side = static_cast<std::size_t>(targetCategories);
  std::vector<double> larger(side * side, 0.0);
  for (int observed = 0; observed < fNCategories; ++observed) {
    const std::vector<double> row = GetMisClassRow(observed);
    std::copy(row.begin(), row.end(),
              larger.begin() + static_cast<std::ptrdiff_t>(observed * side));
  }
  fvMatrix = std::move(larger);
  fNCategories = targetCategories;
}

void NBOutputStatistics::Accumulate(int observed, int predicted, double weight) {
  fvMatrix[static_cast<std::size_t>(observed) * fNCategories + predicted] += weight;
  fTotalWeight += weight;
  if (observed != predicted) fMisclassified += weight;
}

double NBOutputStatistics::GetMisClassElement(int observed, int predicted) const {
  return fvMatrix[static_cast<std::size_t>(observed) * fNCategories + predicted];
}

std::vector<double> NBOutputStatistics::GetMisClassRow(int observed) const {
  const auto row = fvMatrix.begin() + static_cast<std::ptrdiff_t>(observed) * fNCategories;
  return {row, row + fNCategories};
}

std::vector<std::vector<double>> NBOutputStatistics::GetMisClassMatrixAsVecOfRows() const {
  std::vector<std::vector<double>> rows;
  rows.reserve(static_cast<std::size_t>(fNCategories));
  for (int observed = 0; observed < fNCategories; ++observed) {
    rows.push_back(GetMisClassRow(observed));
  }
  return rows;
}

double NBOutputStatistics::GetOverallError() const {
  return fTotalWeight > 0 ? fMisclassified / fTotalWeight * 100 : 0.0;
}
