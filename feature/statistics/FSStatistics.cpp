#include "feature/statistics/FSStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "common/CompensatedSum.h"
#include "common/MissingValue.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"

namespace FSStatistics {

namespace {

std::vector<double> CountsOf(const FSMapICnt& map) {
  std::vector<double> counts;
  for (const auto& [category, count] : map) counts.push_back(count);
  return counts;
}

std::size_t PositionOf(const FSMapICnt& map, int category) {
  const auto at = std::lower_bound(map.begin(), map.end(), category,
                                   [](const auto& entry, int key) { return entry.first < key; });
  return static_cast<std::size_t>(at - map.begin());
}

double NumberOrMissing(double value) {
  return MCMV::IsMissing(value) ? MCMV::gMissingValue : value;
}

}  // namespace

ContingencyTable::ContingencyTable(const FSMapICnt& rows, const FSMapICnt& columns,
                                   const FSMapPiCnt& joint, double total)
    : fRows(CountsOf(rows)), fColumns(CountsOf(columns)), fTotal(total) {
  auto row = rows.begin();
  fStarts.push_back(0);
  for (const auto& [pair, count] : joint) {
    for (; row->first < pair.first; ++row) fStarts.push_back(fCells.size());
    fCells.push_back({PositionOf(columns, pair.second), count});
  }
  fStarts.resize(fRows.size() + 1, fCells.size());
}

// By what the row's other columns leave of N: exact for whole weights.
double ContingencyTable::ExpectedInEmpty(std::size_t row) const {
  const std::span<const Cell> cells = Cells(row);
  if (cells.size() == fColumns.size()) return 0.0;
  double left = fTotal;
  for (const Cell& cell : cells) left -= fColumns[cell.fColumn];
  return ProductOver(fRows[row], std::max(left, 0.0), fTotal);
}

double ContingencyTable::DegreesOfFreedom() const {
  return (static_cast<double>(fRows.size()) - 1.0) * (static_cast<double>(fColumns.size()) - 1.0);
}

double PearsonChiSquare(const ContingencyTable& table) {
  MCCommon::CompensatedSum sum;  // in whatever order the categories came
  for (std::size_t i = 0; i < table.fRows.size(); ++i) {
    for (const auto& [column, count] : table.Cells(i)) {
      const double expected = table.Expected(i, column);
      const double difference = count - expected;
      sum.Add(ProductOver(difference, difference, expected));
    }
    sum.Add(table.ExpectedInEmpty(i));
  }
  return sum.Total();
}

double LikelihoodRatioChiSquare(const ContingencyTable& table) {
  MCCommon::CompensatedSum sum;  // in whatever order the categories came
  for (std::size_t i = 0; i < table.fRows.size(); ++i) {
    for (const auto& [column, count] : table.Cells(i)) {
      sum.Add(count * std::log(count / table.Expected(i, column)));
    }
  }
  return 2.0 * sum.Total();
}

double CramersV(const ContingencyTable& table, double chiSquare) {
  const auto smaller = static_cast<double>(std::min(table.fRows.size(), table.fColumns.size()));
  const double divisor = (smaller - 1.0) * table.fTotal;
  return divisor > 0.0 ? NumberOrMissing(std::sqrt(chiSquare / divisor)) : MCMV::gMissingValue;
}

double AsymmetricLambda(const ContingencyTable& table) {
  if (table.fColumns.empty()) return MCMV::gMissingValue;
  double guessedByRow = 0.0;
  for (std::size_t i = 0; i < table.fRows.size(); ++i) {
    double largest = 0.0;
    for (const auto& cell : table.Cells(i)) largest = std::max(largest, cell.fCount);
    guessedByRow += largest;
  }
  const double guessed = *std::max_element(table.fColumns.begin(), table.fColumns.end());
  const double errors = table.fTotal - guessed;
  return errors > 0.0 ? NumberOrMissing((guessedByRow - guessed) / errors) : MCMV::gMissingValue;
}

Anova OneWayAnova(const FSMapIStat& groups, double total) {
  const FSMean overall = groups.Together().fMean;
  Anova result;
  for (const auto& [category, group] : groups) {
    const double deviation = overall.DistanceTo(group.fMean);
    result.fBetween += group.fWeight * deviation * deviation;
    result.fWithin += (group.fWeight - 1.0) * group.fVariance;
  }
  const auto k = static_cast<double>(groups.Size());
  result.fDf1 = k - 1.0;
  result.fDf2 = total - k;
  return result;
}

double PerfectFrom(double n, double squaredMeanX, double squaredMeanY) {
  constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
  constexpr double kMost = 1e-10;
  const double sums = kEpsilon * (8.0 + 4.0 * std::sqrt(n));
  const double values = kEpsilon * kEpsilon * (squaredMeanX + squaredMeanY);
  return std::min(sums + values, kMost);
}

double CorrelationT(double r, double df) { return r * std::sqrt(df / (1.0 - r * r)); }

}  // namespace FSStatistics
