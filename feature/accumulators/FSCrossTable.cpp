#include "feature/accumulators/FSCrossTable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <utility>

#include "common/CountInTurn.h"
#include "feature/accumulators/FSLoops.h"

namespace {

// Counters that fit into a small part of the nearest cache.
constexpr std::size_t kMostCounters = 4096;

}  // namespace

std::size_t FSCrossTable::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  if (fRows == 0) MakeRoomFor(predictor, cases);
  if (cases.fTargetSide > fSide) Grow(fRows, cases.fTargetSide);
  const std::size_t cells = fCounts.size();
  if (!cases.fbUnitWeights || cells > std::min(kMostCounters, cases.fNCases)) {
    return AddWeights(predictor, cases);
  }
  return AddUnits(predictor, cases,
                  MCCommon::kTablesInTurn * cells <= kMostCounters ? MCCommon::kTablesInTurn : 1);
}

// Most predictors show nearly all their categories at once.
void FSCrossTable::MakeRoomFor(const double* predictor, const FSCaseBlock& cases) {
  double highest = 0.0;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    highest = std::max(highest, value < kFSSmallCategories ? value : 0.0);
  }
  MakeRoom(static_cast<int>(highest), cases.fTargetSide - 1);
}

std::size_t FSCrossTable::AddUnits(const double* predictor, const FSCaseBlock& cases,
                                   std::size_t tables) {
  const std::size_t cells = fCounts.size();
  std::array<std::uint32_t, kMostCounters> counts;
  std::fill_n(counts.begin(), tables * cells, 0);
  FSLoops::InUse().fCountPairs(predictor, cases.fpTargetCategories, cases.fNCases, fRows, fShift,
                               tables, cells, counts.data());
  std::size_t others = 0;
  for (std::size_t cell = 0; cell < cells; ++cell) {
    std::uint32_t count = 0;
    for (std::size_t table = 0; table < tables; ++table) count += counts[table * cells + cell];
    if (cell < At(fRows, 0)) {
      fCounts[cell] += count;
    } else {
      others += count;
    }
  }
  return others;
}

std::size_t FSCrossTable::AddWeights(const double* predictor, const FSCaseBlock& cases) {
  const double rows = fRows;
  const int none = fRows;
  const int shift = fShift;
  std::size_t others = 0;
  double* const counts = fCounts.data();
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    const int row = value > -1.0 && value < rows ? static_cast<int>(value) : none;
    counts[(row << shift) + cases.fpTargetCategories[i]] += cases.fpWeights[i];
    others += row == none ? 1 : 0;
  }
  std::fill_n(&fCounts[At(fRows, 0)], fSide, 0.0);
  return others;
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
