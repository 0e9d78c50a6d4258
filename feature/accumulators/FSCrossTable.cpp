#include "feature/accumulators/FSCrossTable.h"

#include <algorithm>
#include <bit>
#include <utility>

std::size_t FSCrossTable::AddBlock(const double* predictor, const int* targets, std::size_t n,
                                   int side) {
  if (side > fSide) Grow(fRows, side);
  const double rows = fRows;
  const int none = fRows;
  const int shift = fShift;
  double* const counts = fCounts.data();
  for (std::size_t i = 0; i < n; ++i) {
    const double value = predictor[i];
    const int row = value > -1.0 && value < rows ? static_cast<int>(value) : none;
    counts[(row << shift) + targets[i]] += 1.0;
  }
  double others = 0.0;
  for (int j = 0; j < fSide; ++j) others += std::exchange(fCounts[At(fRows, j)], 0.0);
  return static_cast<std::size_t>(others);
}

void FSCrossTable::MakeRoom(int predictor, int target) {
  Grow(std::max(fRows, predictor + 1), std::max(fSide, target + 1));
}

void FSCrossTable::Grow(int rows, int side) {
  const auto roundUp = [](int n) {
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(n)));
  };
  FSCrossTable larger;
  larger.fRows = rows > fRows ? roundUp(rows) : fRows;
  larger.fSide = side > fSide ? roundUp(side) : fSide;
  larger.fShift = std::countr_zero(static_cast<unsigned>(larger.fSide));
  larger.fCounts.resize(larger.At(larger.fRows + 1, 0));
  for (int i = 0; i < fRows; ++i) {
    std::copy_n(&fCounts[At(i, 0)], fSide, &larger.fCounts[larger.At(i, 0)]);
  }
  *this = std::move(larger);
}
