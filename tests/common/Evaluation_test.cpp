// Measures of a classifier and their intervals beside their definitions: weights as copies, areas
// by all pairs, Wilson's bounds by bisection, errors of agreement by differences.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "common/evaluation/Agreement.h"
#include "common/evaluation/EvaluationCounter.h"
#include "common/evaluation/Intervals.h"

namespace {

using MCCommon::Estimate;
using MCCommon::Measure;
using Table = std::vector<std::vector<double>>;

struct Case {
  std::size_t fObserved;
  std::size_t fPredicted;
  std::vector<double> fProbabilities;
};
using Cases = std::vector<Case>;

constexpr double kZ = 1.959963984540054;

Estimate Within(double value, double error, double least, double most) {
  return {value, std::max(value - kZ * error, least), std::min(value + kZ * error, most)};
}

// The bounds are the shares of which the observed one is kZ standard errors away.
Estimate Wilson(double hits, double n) {
  const double share = hits / n;
  const auto bound = [&](double far, double near) {
    for (int i = 0; i < 100; ++i) {
      const double middle = (far + near) / 2;
      const bool isFar = std::abs(share - middle) > kZ * std::sqrt(middle * (1 - middle) / n);
      (isFar ? far : near) = middle;
    }
    return near;
  };
  return {share, bound(0, share), bound(1, share)};
}

Estimate MeanOf(const std::vector<double>& values) {
  const auto n = static_cast<double>(values.size());
  double mean = 0, squares = 0;
  for (const double value : values) mean += value / n;
  for (const double value : values) squares += (value - mean) * (value - mean);
  return Within(mean, std::sqrt(squares / (n - 1) / n), 0, 1e300);
}

// The area and its error, by the share of the other kind that each case stands rightly to.
std::pair<double, double> AreaOf(const Cases& cases, std::size_t k) {
  std::vector<double> shares[2];
  for (const Case& one : cases) {
    double right = 0, others = 0;
    for (const Case& other : cases) {
      if ((other.fObserved == k) == (one.fObserved == k)) continue;
      const double above =
          (one.fProbabilities[k] - other.fProbabilities[k]) * (one.fObserved == k ? 1 : -1);
      right += above > 0 ? 1 : above == 0 ? 0.5 : 0;
      ++others;
    }
    shares[one.fObserved == k].push_back(right / others);
  }
  double variance = 0;
  for (const auto& kind : shares) {
    const Estimate mean = MeanOf(kind);
    variance += std::pow((mean.fHigh - mean.fValue) / kZ, 2);
  }
  return {MeanOf(shares[1]).fValue, std::sqrt(variance)};
}

Estimate OnOdds(std::pair<double, double> area) {
  const double p = area.first, half = kZ * area.second / (p * (1 - p));
  const auto moved = [p](double by) { return 1 / (1 + (1 - p) / p * std::exp(-by)); };
  return half > 0 ? Estimate{p, moved(-half), moved(half)} : Estimate{p};
}

struct Sums {
  explicit Sums(const Table& table) : fRows(table.size()), fColumns(table.size()) {
    for (std::size_t i = 0; i < table.size(); ++i) {
      for (std::size_t j = 0; j < table.size(); ++j) {
        fRows[i] += table[i][j], fColumns[j] += table[i][j], fAll += table[i][j];
      }
      fRight += table[i][i];
    }
    for (std::size_t i = 0; i < table.size(); ++i) {
      fRowSquares += fRows[i] * fRows[i], fColumnSquares += fColumns[i] * fColumns[i];
      fProducts += fRows[i] * fColumns[i];
    }
  }
  std::vector<double> fRows, fColumns;
  double fAll = 0, fRight = 0, fRowSquares = 0, fColumnSquares = 0, fProducts = 0;
};

double Kappa(const Table& table) {
  const Sums s(table);
  return (s.fAll * s.fRight - s.fProducts) / (s.fAll * s.fAll - s.fProducts);
}

double Matthews(const Table& table) {
  const Sums s(table);
  const double square = s.fAll * s.fAll;
  const double scale = std::sqrt((square - s.fRowSquares) * (square - s.fColumnSquares));
  return scale > 0 ? (s.fAll * s.fRight - s.fProducts) / scale : 0;
}

Estimate ByDifferences(const std::function<double(const Table&)>& measure, Table table) {
  const double value = measure(table), n = Sums(table).fAll;
  double mean = 0, square = 0;
  for (auto& row : table) {
    for (double& cell : row) {
      if (cell == 0) continue;
      const double step = 1e-4, was = cell;
      cell = was + step;
      const double up = measure(table);
      cell = was - step;
      const double slope = (up - measure(table)) / (2 * step) * n;
      cell = was;
      mean += was / n * slope, square += was / n * slope * slope;
    }
  }
  return Within(value, std::sqrt((square - mean * mean) / n), -1, 1);
}

// Of the classes of the model and, behind them, those that it does not know.
struct Defined {
  Defined(const Cases& cases, std::size_t model, std::size_t classes)
      : fTable(classes, std::vector<double>(classes)) {
    std::vector<double> losses, distances, bins(10);
    double gaps = 0;
    for (const Case& one : cases) {
      fTable[one.fObserved][one.fPredicted] += 1;
      double own = 0, distance = one.fObserved < model ? 0 : 1;
      for (std::size_t k = 0; k < model; ++k) {
        const double p = one.fProbabilities[k], is = k == one.fObserved ? 1 : 0;
        own += is * p, distance += (is - p) * (is - p);
      }
      losses.push_back(-std::log(std::clamp(own, 0x1p-52, 1 - 0x1p-52)));
      distances.push_back(classes > 2 ? distance : distance / 2);
      const double gap =
          (one.fObserved == one.fPredicted ? 1 : 0) - one.fProbabilities[one.fPredicted];
      bins[std::min<std::size_t>(9, std::floor(10 * one.fProbabilities[one.fPredicted]))] += gap;
      gaps += gap * gap;
    }
    const auto n = static_cast<double>(cases.size());
    double area = 0, error = 0, below = 0, above = 0, recalls = 0, calibration = 0;
    const Sums sums(fTable);
    for (std::size_t k = 0; k < classes; ++k) {
      const auto own = k < model ? AreaOf(cases, k) : std::pair{0.5, 0.0};
      area += own.first * sums.fRows[k] / n, error += own.second * sums.fRows[k] / n;
      const Estimate recall = Wilson(fTable[k][k], sums.fRows[k]);
      recalls += recall.fValue, below += std::pow(recall.fValue - recall.fLow, 2);
      above += std::pow(recall.fHigh - recall.fValue, 2);
    }
    const auto c = static_cast<double>(classes);
    for (const double gap : bins) calibration += std::abs(gap) / n;
    fMeasures = {
        Wilson(sums.fRight, n),
        {recalls / c, recalls / c - std::sqrt(below) / c, recalls / c + std::sqrt(above) / c},
        OnOdds({area, error}),
        MeanOf(losses),
        MeanOf(distances),
        ByDifferences(Kappa, fTable),
        ByDifferences(Matthews, fTable),
        Within(calibration, std::sqrt((gaps / n - calibration * calibration) / n), 0, 1)};
  }
  Table fTable;
  MCCommon::Measures fMeasures;
};

void ExpectNear(const Estimate& found, const Estimate& expected, const std::string& what) {
  EXPECT_NEAR(found.fValue, expected.fValue, 1e-12) << what;
  EXPECT_NEAR(found.fLow, expected.fLow, 1e-7) << what;
  EXPECT_NEAR(found.fHigh, expected.fHigh, 1e-7) << what;
}

Cases Always(Cases cases, std::size_t predicted, const std::vector<double>& probabilities) {
  for (Case& one : cases) one.fPredicted = predicted, one.fProbabilities = probabilities;
  return cases;
}

}  // namespace

TEST(Evaluation, MeasuresAndIntervalsAreThoseOfTheirDefinitions) {
  const std::pair<std::size_t, std::size_t> counts[] = {{2, 2}, {2, 3}, {3, 3}, {4, 5}};
  for (const auto& [model, classes] : counts) {
    std::mt19937 random(static_cast<unsigned>(7 * classes + model));
    MCCommon::EvaluationCounter counter(model);
    Cases copies;
    for (int i = 0; i < 60; ++i) {
      Case one{random() % classes, 0, {}};
      double sum = 0;
      for (std::size_t k = 0; k < model; ++k) {  // few values, so that scores tie
        one.fProbabilities.push_back(1 + random() % 4 + (k == one.fObserved ? 1 : 0));
        sum += one.fProbabilities.back();
      }
      for (double& p : one.fProbabilities) p /= sum;
      const auto& all = one.fProbabilities;
      one.fPredicted = static_cast<std::size_t>(std::ranges::max_element(all) - all.begin());
      const int weight = 1 + i % 3;
      counter.Add(one.fObserved, one.fPredicted, all, weight);
      copies.insert(copies.end(), static_cast<std::size_t>(weight), one);
    }
    std::vector<double> priors(model, 0.6 / static_cast<double>(model)), certain(model);
    priors[1] += 0.4, certain[1] = 1;
    const MCCommon::Evaluation found = counter.Find(priors);
    const Defined defined(copies, model, classes);
    const Defined majority(Always(copies, 1, certain), model, classes);
    const Defined prior(Always(copies, 1, priors), model, classes);
    EXPECT_EQ(found.fConfusions, defined.fTable);
    for (std::size_t m = 0; m < MCCommon::kNMeasures; ++m) {
      const std::string what = "measure " + std::to_string(m) + " of " + std::to_string(classes);
      ExpectNear(found.fMeasures[m], defined.fMeasures[m], what);
      ExpectNear(found.fMajority[m], {majority.fMeasures[m].fValue}, what);
      ExpectNear(found.fPrior[m], {prior.fMeasures[m].fValue}, what);
    }
    const Sums sums(defined.fTable);
    for (std::size_t k = 0; k < model; ++k) {
      const double right = defined.fTable[k][k];
      ExpectNear(found.fClasses[k].fRecall, Wilson(right, sums.fRows[k]), "recall");
      ExpectNear(found.fClasses[k].fPrecision, Wilson(right, sums.fColumns[k]), "precision");
      ExpectNear(found.fClasses[k].fAUC, OnOdds(AreaOf(copies, k)), "area");
    }
  }
}

TEST(Evaluation, OfFewCasesOrOneClassTellsWhatThereIsToTell) {
  const auto evaluated = [](std::size_t model, const std::vector<std::size_t>& observed,
                            const std::vector<std::size_t>& predicted = {}) {
    MCCommon::EvaluationCounter counter(model);
    std::vector<double> probabilities(model, 0.0);
    for (std::size_t i = 0; i < observed.size(); ++i) {
      probabilities[0] = 0.6 + 0.1 * static_cast<double>(i);
      probabilities[1] = 1 - probabilities[0];
      counter.Add(observed[i], predicted.empty() ? 0 : predicted[i], probabilities, 1);
    }
    return counter.Find(std::vector<double>(model, 1.0 / static_cast<double>(model)));
  };
  const auto at = [](const MCCommon::Evaluation& found, Measure measure) {
    return found.fMeasures[static_cast<std::size_t>(measure)];
  };
  ExpectNear(at(evaluated(2, {0, 0}), Measure::kLogLoss), MeanOf({-std::log(0.6), -std::log(0.7)}),
             "two cases");
  constexpr std::size_t kMany = MCCommon::EvaluationCounter::kMostAreas + 1;
  const std::tuple<std::size_t, std::vector<std::size_t>, const char*> withoutArea[] = {
      {2, {0, 0}, "one class"},
      {2, {2, 2}, "one class, which the model does not know"},
      {kMany, {0, 1}, "more classes than areas are found of"}};
  for (const auto& [model, observed, what] : withoutArea) {
    const MCCommon::Evaluation found = evaluated(model, observed);
    EXPECT_EQ(at(found, Measure::kAUC).fValue, MCMV::gMissingValue) << what;
    EXPECT_EQ(found.fClasses[0].fAUC.fValue, MCMV::gMissingValue) << what;
  }
  const Estimate wrong = ByDifferences(Matthews, {{1, 2}, {1, 0}});
  EXPECT_EQ(wrong.fLow, -1);
  ExpectNear(at(evaluated(2, {0, 0, 0, 1}, {0, 1, 1, 0}), Measure::kMCC), wrong,
             "nearly all wrong");
}

TEST(Evaluation, AllRightIsExactlyOneWithoutAnInterval) {
  for (const double unit : {1.0, 0.1, 1.0 / 3.0}) {
    for (int n = 1; n < 40; ++n) {
      const Table cases = {{3 * unit, 0, 0}, {0, n * unit, 0}, {0, 0, unit / n}};
      const MCCommon::Agreement right(cases);
      for (const Estimate& found : {right.Kappa(), right.Matthews()}) {
        EXPECT_EQ(found.fValue, 1.0) << n;
        EXPECT_EQ(found.fHigh, MCMV::gMissingValue) << n;
      }
    }
  }
}

// Quantiles from published tables.
TEST(Evaluation, QuantilesOfStudentAreThoseOfTables) {
  const std::pair<int, double> quantiles[] = {{1, 12.7062}, {2, 4.3027},   {3, 3.1824},
                                              {4, 2.7764},  {9, 2.2622},   {30, 2.0423},
                                              {99, 1.9842}, {1000, 1.9623}};
  for (const auto& [degrees, quantile] : quantiles) {
    EXPECT_NEAR(MCCommon::Intervals::Student(degrees), quantile, 5e-5) << degrees;
  }
}
