// The ranking statistics as functions of counts and moments.
#pragma once

#include <cstddef>
#include <vector>

class FSMapICnt;
class FSMapIStat;
class FSMapPiCnt;

namespace FSStatistics {

// A table of weighted counts n(i,j), rows by predictor and columns by target category, both in
// ascending order of the category.
struct ContingencyTable {
  // `total` is the weight of all cells, joint counts that never occurred are 0.
  ContingencyTable(const FSMapICnt& rows, const FSMapICnt& columns, const FSMapPiCnt& joint,
                   double total);

  double Count(std::size_t row, std::size_t column) const {
    return fCounts[row * fColumns.size() + column];
  }
  // Expected without association: n(i) n(j) / N.
  double Expected(std::size_t row, std::size_t column) const {
    return fRows[row] * fColumns[column] / fTotal;
  }
  // (R - 1)(C - 1).
  double DegreesOfFreedom() const;
  // Fewer than two rows or columns: no association can be seen.
  bool IsDegenerate() const { return fRows.size() < 2 || fColumns.size() < 2; }

  std::vector<double> fRows;     // n(i)
  std::vector<double> fColumns;  // n(j)
  std::vector<double> fCounts;   // n(i,j), row by row
  double fTotal;                 // N
};

// Sum over all cells of (n(i,j) - E(i,j))^2 / E(i,j).
double PearsonChiSquare(const ContingencyTable& table);

// 2 times the sum over the cells with n(i,j) > 0 of n(i,j) ln(n(i,j) / E(i,j)).
double LikelihoodRatioChiSquare(const ContingencyTable& table);

// sqrt(X2 / ((min(R, C) - 1) N)); missing where the divisor is not positive.
double CramersV(const ContingencyTable& table, double chiSquare);

// (sum over rows of the largest count - M) / (N - M), M the largest column total: by how much
// knowing the row lowers the error of guessing the column. Missing where N = M.
double AsymmetricLambda(const ContingencyTable& table);

// One-way analysis of variance.
struct Anova {
  double fBetween = 0.0;  // sum over groups of w (mean - overall mean)^2
  double fWithin = 0.0;   // sum over groups of (w - 1) variance
  double fDf1 = 0.0;      // groups - 1
  double fDf2 = 0.0;      // N - groups

  double F() const { return fBetween / fDf1 / (fWithin / fDf2); }
};
Anova OneWayAnova(const FSMapIStat& groups, double overallMean, double total);

// t = r sqrt(df / (1 - r^2)). REQUIRES: r^2 < 1, df >= 0.
double CorrelationT(double r, double df);

}  // namespace FSStatistics
