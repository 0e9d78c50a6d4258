#include "naivebayes/selection/NBFormulas.h"

#include <algorithm>
#include <cmath>

#include "naivebayes/model/NBayesInputBase.h"

namespace NBFormulas {

void AddAJTerms(const NBayesInputBase& model, int m, double n, const NBayesInputBase* less,
                NBSum& sum) {
  for (int k = 0; k < model.GetNTargetCategories(); ++k) {
    const double count = model.GetCount(m, k) - (less == nullptr ? 0 : less->GetCount(m, k));
    if (count != 0) sum.Add(count / n * std::log(model.GetProbability(m, k)));
  }
}

double ComputeAJTerm(const NBayesInputBase& model, double n, const NBayesInputBase* less) {
  NBSum sum;
  for (int m = 0; m < model.GetNCategories(); ++m) AddAJTerms(model, m, n, less, sum);
  return sum.Total();
}

double ComputeBase(const std::vector<double>& counts, const std::vector<double>& priors, double n) {
  NBSum sum;
  for (std::size_t k = 0; k < counts.size(); ++k) {
    if (counts[k] != 0) sum.Add(counts[k] * std::log(priors[k]));
  }
  return sum.Total() / n;
}

double ComputePseudoBIC(int size, double n, double logLikelihood) {
  return size * 0.5 * std::log(n) / n - logLikelihood;
}

int ComputeAutomaticSize(int forced, int candidates) {
  const int total = forced + candidates;
  const int allowance = total * 0.2 >= 20 ? std::min(total / 5, 100) : 20;
  return std::min(total, forced + allowance);
}

int ComputeReportCount(int asked, int forced, int candidates) {
  const int count = asked > 0 ? asked : 5;
  return count > candidates ? candidates + (forced > 0 ? 1 : 0) : count;
}

}  // namespace NBFormulas
