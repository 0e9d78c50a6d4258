#include "feature/FSStatistics.h"

#include <algorithm>
#include <cmath>

#include "common/MissingValue.h"
#include "feature/FSMapIStat.h"
#include "feature/FSMaps.h"

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

}  // namespace

ContingencyTable::ContingencyTable(const FSMapICnt& rows, const FSMapICnt& columns,
                                   const FSMapPiCnt& joint, double total)
    : fRows(CountsOf(rows)),
      fColumns(CountsOf(columns)),
      fCounts(fRows.size() * fColumns.size()),
      fTotal(total) {
  for (const auto& [pair, count] : joint) {
    fCounts[PositionOf(rows, pair.first) * fColumns.size() + PositionOf(columns, pair.second)] =
        count;
  }
}

double ContingencyTable::DegreesOfFreedom() const {
  return (static_cast<double>(fRows.size()) - 1.0) * (static_cast<double>(fColumns.size()) - 1.0);
}

double PearsonChiSquare(const ContingencyTable& table) {
  double sum = 0.0;
  for (std::size_t i = 0; i < table.fRows.size(); ++i) {
    for (std::size_t j = 0; j < table.fColumns.size(); ++j) {
      const double expected = table.Expected(i, j);
      const double difference = table.Count(i, j) - expected;
      sum += difference * difference / expected;
    }
  }
  return sum;
}

double LikelihoodRatioChiSquare(const ContingencyTable& table) {
  double sum = 0.0;
  for (std::size_t i = 0; i < table.fRows.size(); ++i) {
    for (std::size_t j = 0; j < table.fColumns.size(); ++j) {
      const double count = table.Count(i, j);
      if (count > 0.0) sum += count * std::log(count / table.Expected(i, j));
    }
  }
  return 2.0 * sum;
}

double CramersV(const ContingencyTable& table, double chiSquare) {
  const auto smaller = static_cast<double>(std::min(table.fRows.size(), table.fColumns.size()));
  const double divisor = (smaller - 1.0) * table.fTotal;
  return divisor > 0.0 ? std::sqrt(chiSquare / divisor) : MCMV::gMissingValue;
}

double AsymmetricLambda(const ContingencyTable& table) {
  if (table.fColumns.empty()) return MCMV::gMissingValue;
  double guessedByRow = 0.0;
  const std::size_t columns = table.fColumns.size();
  for (auto row = table.fCounts.begin(); row != table.fCounts.end();
       row += static_cast<std::ptrdiff_t>(columns)) {
    guessedByRow += *std::max_element(row, row + static_cast<std::ptrdiff_t>(columns));
  }
  const double guessed = *std::max_element(table.fColumns.begin(), table.fColumns.end());
  const double errors = table.fTotal - guessed;
  return errors > 0.0 ? (guessedByRow - guessed) / errors : MCMV::gMissingValue;
}

Anova OneWayAnova(const FSMapIStat& groups, double overallMean, double total) {
  Anova result;
  for (const auto& [category, group] : groups) {
    const double deviation = group.fMean - overallMean;
    result.fBetween += group.fWeight * deviation * deviation;
    result.fWithin += (group.fWeight - 1.0) * group.fVariance;
  }
  const auto k = static_cast<double>(groups.Size());
  result.fDf1 = k - 1.0;
  result.fDf2 = total - k;
  return result;
}

double CorrelationT(double r, double df) { return r * std::sqrt(df / (1.0 - r * r)); }

}  // namespace FSStatistics
