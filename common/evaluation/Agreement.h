// Measures of a table of observed and predicted classes, with intervals.
#pragma once

#include <vector>

#include "common/evaluation/Evaluation.h"

namespace MCCommon {

class Agreement {
 public:
  // Cases by observed class (row) and predicted class. REQUIRES: as many columns as rows.
  explicit Agreement(const std::vector<std::vector<double>>& cases);

  double ObservedOf(std::size_t k) const { return fObserved[k]; }
  double PredictedOf(std::size_t k) const { return fPredicted[k]; }

  Estimate Accuracy() const;
  Estimate Recall(std::size_t k) const;
  Estimate Precision(std::size_t k) const;
  Estimate BalancedAccuracy() const;
  // Cohen's kappa; missing where only one class was observed. This one and the next are 1 without
  // an interval where every case was predicted right.
  Estimate Kappa() const;
  // The correlation coefficient of Matthews, for any number of classes that of Gorodkin; missing
  // where only one class was observed, 0 where only one was predicted.
  Estimate Matthews() const;

 private:
  // The standard error of a function of the cells' shares, of which `slope(i, j)` are the
  // derivatives.
  template <class Slope>
  double ErrorOf(Slope slope) const;
  double ExpectedByChance() const;
  static bool IsOneClass(const std::vector<double>& totals);

  const std::vector<std::vector<double>>& fCases;
  std::vector<double> fObserved;
  std::vector<double> fPredicted;
  double fTotal = 0.0;
  double fCorrect = 0.0;
  bool fbPerfect = true;  // by the cells: sums of fractions are not exact
};

}  // namespace MCCommon
