// The statistics of docs/methods.md once more, straight from their formulas: one case after the
// other, two passes, in long double. Slow, short, and of one piece with nothing that it checks.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>
#include <vector>

namespace SlowReference {

using Real = long double;

// A case of one predictor and the target, both valid.
struct Pair {
  double fX;
  double fY;
  double fWeight;
};
using Pairs = std::vector<Pair>;

// What a test shows: p-value, statistic, degrees of freedom.
struct Test {
  Real fP = 0;
  Real fStatistic = 0;
  Real fDf1 = 0;
  Real fDf2 = 0;
};

// ---- Tails --------------------------------------------------------------------------------------

// The regularised upper incomplete gamma function, by its series or its continued fraction.
inline Real UpperGamma(Real a, Real x) {
  if (x <= 0) return 1;
  const Real scale = std::exp(a * std::log(x) - x - std::lgamma(a));
  if (x < a + 1) {
    Real sum = 1 / a;
    Real term = sum;
    for (Real n = a + 1; term > sum * 1e-20L; ++n) sum += term *= x / n;
    return 1 - scale * sum;
  }
  Real fraction = 0;
  for (int n = 400; n > 0; --n) fraction = n * (n - a) / (x + 2 * n + 1 - a - fraction);
  return scale / (x + 1 - a - fraction);
}

// The regularised incomplete beta function, by its continued fraction from the end.
inline Real LowerBeta(Real a, Real b, Real x) {
  if (x <= 0) return 0;
  if (x >= 1) return 1;
  if (x > (a + 1) / (a + b + 2)) return 1 - LowerBeta(b, a, 1 - x);
  Real fraction = 1;
  for (int m = 600; m > 0; --m) {
    const Real even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
    const Real odd = -(a + m - 1) * (a + b + m - 1) * x / ((a + 2 * m - 2) * (a + 2 * m - 1));
    fraction = 1 + odd / (1 + even / fraction);
  }
  const Real front = std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) +
                              a * std::log(x) + b * std::log1p(-x));
  return front / a / fraction;
}

inline Real ChiSquareTail(Real x, Real df) { return UpperGamma(df / 2, x / 2); }
inline Real FTail(Real f, Real df1, Real df2) {
  return LowerBeta(df2 / 2, df1 / 2, df2 / (df2 + df1 * f));
}
inline Real TwoTailsOfT(Real t, Real df) { return LowerBeta(df / 2, 0.5L, df / (df + t * t)); }

// ---- Two categorical variables ------------------------------------------------------------------

struct Table {
  std::map<double, Real> fRows, fColumns;
  std::map<std::pair<double, double>, Real> fCells;
  Real fN = 0;

  explicit Table(const Pairs& pairs) {
    for (const Pair& pair : pairs) {
      fRows[pair.fX] += pair.fWeight;
      fColumns[pair.fY] += pair.fWeight;
      fCells[{pair.fX, pair.fY}] += pair.fWeight;
      fN += pair.fWeight;
    }
  }
  Real Df() const { return Real(fRows.size() - 1) * Real(fColumns.size() - 1); }
  Real Cell(double row, double column) const {
    const auto at = fCells.find({row, column});
    return at == fCells.end() ? 0 : at->second;
  }
};

inline Test Pearson(const Table& table) {
  Test test{0, 0, table.Df()};
  for (const auto& [row, n] : table.fRows) {
    for (const auto& [column, m] : table.fColumns) {
      const Real expected = n * m / table.fN;
      const Real off = table.Cell(row, column) - expected;
      test.fStatistic += off * off / expected;
    }
  }
  test.fP = ChiSquareTail(test.fStatistic, test.fDf1);
  return test;
}

inline Test Likelihood(const Table& table) {
  Test test{0, 0, table.Df()};
  for (const auto& [cell, n] : table.fCells) {
    const Real expected = table.fRows.at(cell.first) * table.fColumns.at(cell.second) / table.fN;
    test.fStatistic += 2 * n * std::log(n / expected);
  }
  test.fP = ChiSquareTail(test.fStatistic, test.fDf1);
  return test;
}

inline Real CramersV(const Table& table) {
  const Real least = Real(std::min(table.fRows.size(), table.fColumns.size()));
  return std::sqrt(Pearson(table).fStatistic / ((least - 1) * table.fN));
}

inline Real Lambda(const Table& table) {
  Real most = 0;
  for (const auto& [column, n] : table.fColumns) most = std::max(most, n);
  Real best = 0;
  for (const auto& [row, n] : table.fRows) {
    Real largest = 0;
    for (const auto& [column, m] : table.fColumns) {
      largest = std::max(largest, table.Cell(row, column));
    }
    best += largest;
  }
  return (best - most) / (table.fN - most);
}

// ---- Scale variables ----------------------------------------------------------------------------

// One-way analysis of variance: fX is the group, fY the value.
inline Test Anova(const Pairs& pairs) {
  std::map<double, std::pair<Real, Real>> groups;  // weight, sum
  Real n = 0;
  Real sum = 0;
  for (const Pair& pair : pairs) {
    groups[pair.fX].first += pair.fWeight;
    groups[pair.fX].second += Real(pair.fWeight) * pair.fY;
    n += pair.fWeight;
    sum += Real(pair.fWeight) * pair.fY;
  }
  Real between = 0;
  Real within = 0;
  for (const auto& [group, total] : groups) {
    const Real off = total.second / total.first - sum / n;
    between += total.first * off * off;
  }
  for (const Pair& pair : pairs) {
    const auto& [weight, total] = groups[pair.fX];
    const Real off = pair.fY - total / weight;
    within += pair.fWeight * off * off;
  }
  Test test;
  test.fDf1 = Real(groups.size()) - 1;
  test.fDf2 = n - Real(groups.size());
  test.fStatistic = (between / test.fDf1) / (within / test.fDf2);
  test.fP = FTail(test.fStatistic, test.fDf1, test.fDf2);
  return test;
}

// fStatistic is t, fDf2 the correlation.
inline Test Correlation(const Pairs& pairs) {
  Real n = 0, x = 0, y = 0, xx = 0, yy = 0, xy = 0;
  for (const Pair& pair : pairs) {
    n += pair.fWeight;
    x += Real(pair.fWeight) * pair.fX;
    y += Real(pair.fWeight) * pair.fY;
  }
  for (const Pair& pair : pairs) {
    const Real dx = pair.fX - x / n, dy = pair.fY - y / n;
    xx += pair.fWeight * dx * dx;
    yy += pair.fWeight * dy * dy;
    xy += pair.fWeight * dx * dy;
  }
  Test test;
  test.fDf1 = n - 2;
  test.fDf2 = xy / std::sqrt(xx * yy);
  test.fStatistic = test.fDf2 * std::sqrt(test.fDf1 / (1 - test.fDf2 * test.fDf2));
  test.fP = TwoTailsOfT(test.fStatistic, test.fDf1);
  return test;
}

// ---- Naive Bayes --------------------------------------------------------------------------------

// The probabilities of the classes 0, 1, ... of one case; a category below 0 is missing. The rows
// hold the class and then the predictors' categories.
inline std::vector<Real> Posterior(const std::vector<std::vector<int>>& rows,
                                   const std::vector<int>& values, int classes) {
  const Real n = Real(rows.size());
  std::vector<Real> counts(classes, 0);
  for (const auto& row : rows) ++counts[row[0]];
  const auto used = [](const auto& list) {
    return Real(std::count_if(list.begin(), list.end(), [](const auto& c) { return c > 0; }));
  };
  std::vector<Real> scores;
  for (const Real count : counts) scores.push_back((count + 1 / n) / (n + used(counts) / n));
  for (std::size_t j = 0; j < values.size(); ++j) {
    if (values[j] < 0) continue;
    std::vector<Real> categories(64, 0), both(classes, 0), seen(classes, 0);
    for (const auto& row : rows) {
      if (row[j + 1] < 0) continue;
      ++categories[row[j + 1]];
      ++seen[row[0]];
      if (row[j + 1] == values[j]) ++both[row[0]];
    }
    // A predictor with fewer than two categories is not in the model.
    if (used(categories) < 2) continue;
    for (int k = 0; k < classes; ++k) {
      scores[k] *= (both[k] + 1 / n) / (seen[k] + used(categories) / n);
    }
  }
  Real sum = 0;
  for (const Real score : scores) sum += score;
  for (Real& score : scores) score /= sum;
  return scores;
}

}  // namespace SlowReference
