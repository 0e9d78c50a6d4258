#include "naivebayes/model/NBLeaks.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/model/NBayesInput.h"
#include "naivebayes/variables/NBContVar.h"

using MCCommon::LeakTally;
using MCCommon::LeakTraits;

namespace {

// The sums over one table: weight by target category, and all.
struct Totals {
  explicit Totals(const NBayesInputBase& counts)
      : fvTargets(static_cast<std::size_t>(counts.GetNTargetCategories()), 0.0) {
    for (int m = 0; m < counts.GetNCategories(); ++m) {
      for (std::size_t k = 0; k < fvTargets.size(); ++k) {
        fvTargets[k] += counts.GetCount(m, static_cast<int>(k));
      }
    }
    for (const double total : fvTargets) fTotal += total;
  }

  std::vector<double> fvTargets;
  double fTotal = 0.0;
};

double LargestCount(const NBayesInputBase& counts, int category) {
  double largest = 0.0;
  for (int k = 0; k < counts.GetNTargetCategories(); ++k) {
    largest = std::max(largest, counts.GetCount(category, k));
  }
  return largest;
}

// The variance of a value whose bins are so wide, spread evenly within each.
double BinnedVariance(const NBayesInputBase& counts, double width, double total) {
  double mean = 0.0;
  for (int m = 0; m < counts.GetNCategories(); ++m) mean += m * counts.GetRowTotal(m) / total;
  double variance = 1.0 / 12.0;
  for (int m = 0; m < counts.GetNCategories(); ++m) {
    variance += (m - mean) * (m - mean) * counts.GetRowTotal(m) / total;
  }
  return variance * width * width;
}

}  // namespace

NBInputTraits NBLeaks::TraitsOf(const NBayesInput& input, double unit) {
  const Totals totals(input);
  LeakTally tally(unit);
  for (int m = 0; m < input.GetNCategories(); ++m) {
    const double weight = input.GetRowTotal(m);
    if (weight > 0.0) tally.AddCategory(weight, LargestCount(input, m) == weight);
  }
  const double largest = *std::max_element(totals.fvTargets.begin(), totals.fvTargets.end());
  LeakTraits traits = tally.Traits(largest / totals.fTotal);
  const auto* binned = dynamic_cast<const NBContVar*>(input.GetVariable());
  if (binned != nullptr) {
    const double width = (binned->GetMax() - binned->GetMin()) / input.GetNCategories();
    traits.fVariance = BinnedVariance(input, width, totals.fTotal);
    traits.fCategories = 0.0;
  } else if (MCCommon::LeakCheck::HasFewCasesPerCategory(traits.fCategories, traits.fCases)) {
    traits.fGainOnOthers = GainOnOthers(input, unit);
  }
  return {input.GetVarIndex(), traits};
}

// A case in cell (m,k) leaves N(m,k) - 1 and T(k) - 1 behind. With alpha = 1/N the score of a
// target category is its prior times the estimate of P(m|k), as in the model itself.
double NBLeaks::GainOnOthers(const NBayesInputBase& counts, double unit) {
  const Totals totals(counts);
  const double alpha = 1.0 / totals.fTotal;
  const double smoothed = counts.GetNNonEmpty() * alpha;
  NBSum gain;
  for (int m = 0; m < counts.GetNCategories(); ++m) {
    const auto score = [&](std::size_t k, double left) {
      const double count = std::max(counts.GetCount(m, static_cast<int>(k)) - left, 0.0);
      const double total = std::max(totals.fvTargets[k] - left, 0.0);
      return totals.fvTargets[k] / totals.fTotal * (alpha + count) / (smoothed + total);
    };
    double scores = 0.0;
    for (std::size_t k = 0; k < totals.fvTargets.size(); ++k) scores += score(k, 0.0);
    for (std::size_t k = 0; k < totals.fvTargets.size(); ++k) {
      const double weight = counts.GetCount(m, static_cast<int>(k));
      if (!(weight > 0.0)) continue;
      const double own = score(k, unit);
      const double posterior = own / (scores - score(k, 0.0) + own);
      gain.Add(weight * std::log(posterior / (totals.fvTargets[k] / totals.fTotal)));
    }
  }
  return gain.Total() / totals.fTotal;
}
