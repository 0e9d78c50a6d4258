// The ranking statistics as functions of counts and moments.
#pragma once

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

class FSMapICnt;
class FSMapIStat;
class FSMapPiCnt;

namespace FSStatistics {

// a b / c, also where no number holds a b.
inline double ProductOver(double a, double b, double c) {
  const double product = a * b;
  return std::isfinite(product) ? product / c : a * (b / c);
}

// A table of weighted counts n(i,j), rows by predictor and columns by target category, both in
// ascending order of the category. Cells that never occurred are not stored: a table of many rows
// and columns takes the space of its cases, not of its grid.
struct ContingencyTable {
  struct Cell {
    std::size_t fColumn;
    double fCount;
  };

  // `total` is the weight of all cells. REQUIRES: the categories of the joint counts are among
  // those of rows and columns.
  ContingencyTable(const FSMapICnt& rows, const FSMapICnt& columns, const FSMapPiCnt& joint,
                   double total);

  // Expected without association: n(i) n(j) / N.
  double Expected(std::size_t row, std::size_t column) const {
    return ProductOver(fRows[row], fColumns[column], fTotal);
  }
  // The sum of what is expected in the cells of a row that never occurred.
  double ExpectedInEmpty(std::size_t row) const;
  // The cells of a row that occurred, in order.
  std::span<const Cell> Cells(std::size_t row) const {
    return {fCells.data() + fStarts[row], fCells.data() + fStarts[row + 1]};
  }
  // (R - 1)(C - 1).
  double DegreesOfFreedom() const;
  // Fewer than two rows or columns: no association can be seen.
  bool IsDegenerate() const { return fRows.size() < 2 || fColumns.size() < 2; }

  std::vector<double> fRows;         // n(i)
  std::vector<double> fColumns;      // n(j)
  std::vector<Cell> fCells;          // row by row
  std::vector<std::size_t> fStarts;  // of each row in fCells, and the end
  double fTotal;                     // N
};

// Sum over all cells of (n(i,j) - E(i,j))^2 / E(i,j), which is E(i,j) where nothing occurred.
double PearsonChiSquare(const ContingencyTable& table);

// 2 times the sum over the cells with n(i,j) > 0 of n(i,j) ln(n(i,j) / E(i,j)).
double LikelihoodRatioChiSquare(const ContingencyTable& table);

// sqrt(X2 / ((min(R, C) - 1) N)); missing where the divisor is not positive, or the result no
// number.
double CramersV(const ContingencyTable& table, double chiSquare);

// (sum over rows of the largest count - M) / (N - M), M the largest column total: by how much
// knowing the row lowers the error of guessing the column. Missing where N = M, or the result is no
// number.
double AsymmetricLambda(const ContingencyTable& table);

// One-way analysis of variance.
struct Anova {
  double fBetween = 0.0;  // sum over groups of w (mean - overall mean)^2
  double fWithin = 0.0;   // sum over groups of (w - 1) variance
  double fDf1 = 0.0;      // groups - 1
  double fDf2 = 0.0;      // N - groups

  double F() const { return fBetween / fDf1 / (fWithin / fDf2); }
};
Anova OneWayAnova(const FSMapIStat& groups, double total);

// A correlation r of n cases is taken for perfect where 1 - r^2 is not above this limit, which is
// what rounding can leave of a perfect one; the squared means in units of the variances say how
// coarse doubles are beside the spread of the values.
//
// Each term of a sum of squares or products carries a few roundings, relative to itself; they go
// either way, so that relative to the sum they grow like sqrt(n) u (N. J. Higham, T. Mary, A new
// approach to probabilistic rounding error analysis, SIAM Journal on Scientific Computing 41
// (2019), A2815-A2835). Of a million perfect pairs 1 - r^2 came out at 0.7 sqrt(n) 2u at most; 4
// sqrt(n) 2u, and 8 * 2u for r itself, leave room. Values that are themselves rounded are off by u
// times their size, which moves 1 - r^2 by the square of that, in units of the variance. A limit
// above 1e-10 would take for perfect what is merely very strong.
double PerfectFrom(double n, double squaredMeanX, double squaredMeanY);

// t = r sqrt(df / (1 - r^2)). REQUIRES: r^2 < 1, df >= 0.
double CorrelationT(double r, double df);

}  // namespace FSStatistics
