// A NAIVEBAYES run by its definitions: from the raw cases, one case and one category at a time,
// with plain sums and logarithms. Slow, short, and of one piece with nothing that it checks.
#pragma once

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace MCTest {

// The cases of a table; NaN is missing. A category is any number, its order that of the numbers.
struct NaiveCases {
  struct Predictor {
    std::string fName;
    bool fbScale;
    std::vector<double> fValues;
  };
  std::vector<double> fTarget;
  std::vector<double> fWeights;  // as they stand in the table; empty: one each
  std::vector<bool> fTraining;
  std::vector<Predictor> fPredictors;
};

class NaiveReference {
 public:
  using Subset = std::vector<int>;  // of predictors

  NaiveReference(NaiveCases cases, int bins) : fCases(std::move(cases)), fNBins(bins) {
    fClasses = Distinct(fCases.fTarget);
    for (const auto& predictor : fCases.fPredictors) Train(predictor);
    std::vector<double> counts(fClasses.size(), 0.0);
    for (int i = 0; i < Size(); ++i) {
      if (IsCounted(i) && IsTraining(i)) counts[Class(i)] += Weight(i);
    }
    const auto used = std::count_if(counts.begin(), counts.end(), [](double n) { return n > 0; });
    for (const double n : counts) {
      fPriors.push_back((n + 1 / N()) / (N() + static_cast<double>(used) / N()));
    }
  }

  int Size() const { return static_cast<int>(fCases.fTarget.size()); }
  int NClasses() const { return static_cast<int>(fClasses.size()); }
  bool IsTraining(int i) const { return fCases.fTraining[i]; }

  // The category of the target, -1 when missing.
  int Class(int i) const { return CodeOf(fClasses, fCases.fTarget[i]); }
  // Rounded; 0 for a case that does not count.
  double Weight(int i) const {
    if (fCases.fWeights.empty()) return 1.0;
    const double weight = std::floor(fCases.fWeights[i] + 0.5);
    return weight > 0 ? weight : 0.0;
  }
  bool IsCounted(int i) const { return Class(i) >= 0 && Weight(i) > 0; }

  // The weight of the training cases, or of the test cases.
  double N(bool training = true) const {
    double n = 0;
    for (int i = 0; i < Size(); ++i) n += IsTraining(i) == training && IsCounted(i) ? Weight(i) : 0;
    return n;
  }

  bool IsUsable(int predictor) const {
    const auto& rows = fTables[predictor].fRows;
    return std::count_if(rows.begin(), rows.end(), [](double row) { return row > 0; }) >= 2;
  }

  // P(class | the subset's values). `isScoring`: values that no training case had go to the nearest
  // bins that one had.
  double Posterior(int i, const Subset& subset, int k, bool isScoring = false) const {
    double sum = 0;
    for (int c = 0; c < NClasses(); ++c) sum += Joint(i, subset, c, isScoring);
    return Joint(i, subset, k, isScoring) / sum;
  }
  int Winner(int i, const Subset& subset) const {
    int best = 0;
    for (int k = 1; k < NClasses(); ++k) {
      if (Posterior(i, subset, k, true) > Posterior(i, subset, best, true)) best = k;
    }
    return best;
  }

  // The average of log P(class | values) over the training or the test cases.
  double LogLikelihood(const Subset& subset, bool training = true) const {
    double sum = 0;
    for (int i = 0; i < Size(); ++i) {
      if (IsTraining(i) != training || !IsCounted(i)) continue;
      sum += Weight(i) * std::log(Posterior(i, subset, Class(i)));
    }
    return sum / N(training);
  }
  double PseudoBIC(const Subset& subset) const {
    return 0.5 * static_cast<double>(subset.size()) * std::log(N()) / N() - LogLikelihood(subset);
  }

  // The forced predictors, then the best candidate at each step, the earlier one of equals.
  Subset Forward(const Subset& forced, int nSteps) const {
    Subset order = forced;
    for (int step = 0; step < nSteps; ++step) {
      int best = -1;
      double bestValue = 0;
      for (int j = 0; j < static_cast<int>(fTables.size()); ++j) {
        if (std::find(order.begin(), order.end(), j) != order.end() || !IsUsable(j)) continue;
        Subset subset = order;
        subset.push_back(j);
        const double value = LogLikelihood(subset);
        if (best >= 0 && !(value > bestValue)) continue;
        best = j;
        bestValue = value;
      }
      if (best < 0) break;
      order.push_back(best);
    }
    return order;
  }

 private:
  struct Table {
    std::vector<double> fCategories;                  // of a categorical predictor
    std::vector<double> fCuts;                        // of a scale one
    std::vector<double> fRows;                        // training weight by category
    std::vector<std::vector<double>> fProbabilities;  // by category and class
  };

  static std::vector<double> Distinct(const std::vector<double>& values) {
    std::set<double> distinct;
    for (const double value : values) {
      if (!std::isnan(value)) distinct.insert(value);
    }
    return {distinct.begin(), distinct.end()};
  }
  static int CodeOf(const std::vector<double>& categories, double value) {
    const auto place = std::find(categories.begin(), categories.end(), value);
    return place == categories.end() ? -1 : static_cast<int>(place - categories.begin());
  }

  int Code(const Table& table, double value) const {
    if (std::isnan(value)) return -1;
    if (!table.fCategories.empty()) return CodeOf(table.fCategories, value);
    return static_cast<int>(std::count_if(table.fCuts.begin(), table.fCuts.end(),
                                          [value](double cut) { return cut < value; }));
  }

  // A bin without training cases belongs to its neighbours, to either up to the middle.
  int ScoringCode(const Table& table, double value) const {
    const int code = Code(table, value);
    if (code < 0 || table.fCuts.empty()) return code;
    int left = code;
    int right = code;
    while (left >= 0 && table.fRows[left] == 0) --left;
    while (right < fNBins && table.fRows[right] == 0) ++right;
    if (left < 0 || left == right) return right;
    if (right == fNBins) return left;
    const double middle = (table.fCuts[left] + table.fCuts[right - 1]) / 2;
    return value > middle ? right : left;
  }

  void Train(const NaiveCases::Predictor& predictor) {
    Table table;
    const std::vector<double> distinct = Distinct(predictor.fValues);
    if (predictor.fbScale) {
      const double width = (distinct.back() - distinct.front()) / fNBins;
      for (int b = 1; b < fNBins; ++b) table.fCuts.push_back(distinct.front() + b * width);
    } else {
      table.fCategories = distinct;
    }
    const std::size_t size = predictor.fbScale ? table.fCuts.size() + 1 : distinct.size();
    table.fRows.assign(size, 0.0);
    table.fProbabilities.assign(size, std::vector<double>(fClasses.size(), 0.0));
    std::vector<double> totals(fClasses.size(), 0.0);
    for (int i = 0; i < Size(); ++i) {
      const int code = Code(table, predictor.fValues[i]);
      if (code < 0 || !IsTraining(i) || !IsCounted(i)) continue;
      const auto k = static_cast<std::size_t>(Class(i));
      table.fRows[code] += Weight(i);
      table.fProbabilities[code][k] += Weight(i);
      totals[k] += Weight(i);
    }
    const auto used = static_cast<double>(
        std::count_if(table.fRows.begin(), table.fRows.end(), [](double row) { return row > 0; }));
    for (auto& row : table.fProbabilities) {
      for (std::size_t k = 0; k < row.size(); ++k) {
        row[k] = (1 / N() + row[k]) / (used / N() + totals[k]);
      }
    }
    fTables.push_back(std::move(table));
  }

  double Joint(int i, const Subset& subset, int k, bool isScoring) const {
    double product = fPriors[k];
    for (const int j : subset) {
      const Table& table = fTables[j];
      const double value = fCases.fPredictors[j].fValues[i];
      const int code = isScoring ? ScoringCode(table, value) : Code(table, value);
      if (code < 0) continue;
      product *= table.fProbabilities[code][k];
    }
    return product;
  }

  NaiveCases fCases;
  int fNBins;
  std::vector<double> fClasses;
  std::vector<double> fPriors;
  std::vector<Table> fTables;
};

}  // namespace MCTest
