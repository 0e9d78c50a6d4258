#include "naivebayes/selection/NBOdds.h"

#include <algorithm>

#include "naivebayes/model/NBayesInputBase.h"

void NBOdds::Reset(const std::vector<double>& priors, const std::int32_t* targets,
                   std::size_t cases) {
  fOthers.Reset(priors, cases);
  fvOwn.resize(cases);
  fvScalings.clear();
  fLeast = 1;
  for (std::size_t i = 0; i < cases; ++i) {
    fvOwn[i] = priors[targets[i]];
    fLeast = std::min(fLeast, fvOwn[i]);
    fOthers.Exclude(i, targets[i]);
  }
}

void NBOdds::Multiply(const NBayesInputBase& input, NBCodes codes, const std::int32_t* targets) {
  fOthers.Multiply(input, codes);
  if (fLeast * input.GetLeastFactor() < NBScaledProducts::kLookBelow) ScaleUpOwn();
  fLeast *= input.GetLeastFactor();
  const auto multiply = [&](const auto* column) {
    for (std::size_t i = 0; i < fvOwn.size(); ++i) {
      fvOwn[i] *= input.GetFactors(column[i])[targets[i]];
    }
  };
  std::visit(multiply, codes);
}

void NBOdds::ScaleUpOwn() {
  fLeast = 1;
  for (std::size_t i = 0; i < fvOwn.size(); ++i) {
    while (fvOwn[i] < NBScaledProducts::kScaleBelow && fvOwn[i] > 0) {
      if (fvScalings.empty()) fvScalings.assign(fvOwn.size(), 0);
      fvOwn[i] *= NBScaledProducts::kScale;
      ++fvScalings[i];
    }
    fLeast = std::min(fLeast, fvOwn[i]);
  }
}

void NBOdds::AddTerms(const double* weights, NBOddsSum& sum) const {
  for (std::size_t i = 0; i < fvOwn.size(); ++i) {
    sum.Add(fOthers.SumOf(i) / fvOwn[i], ExponentOf(i), weights[i]);
  }
}

namespace {

// The sum of products of two rows, in four places in turn where there are many.
template <int kCategories>
double SumProducts(const double* values, const double* factors, std::size_t categories) {
  double sum = 0;
  std::size_t k = 0;
  if constexpr (kCategories > 0) {
    for (; k < kCategories; ++k) sum += values[k] * factors[k];
    return sum;
  }
  double places[4] = {};
  for (; k + 4 <= categories; k += 4) {
    for (int place = 0; place < 4; ++place) places[place] += values[k + place] * factors[k + place];
  }
  for (; k < categories; ++k) sum += values[k] * factors[k];
  return sum + ((places[0] + places[1]) + (places[2] + places[3]));
}

}  // namespace

template <int kCategories, typename Code>
void NBOdds::AddTermsOf(const NBayesInputBase& input, const Code* codes,
                        const std::int32_t* targets, const double* weights, NBOddsSum& sum) const {
  NBOddsSum local = sum;  // which no pointer can reach
  for (std::size_t i = 0; i < fvOwn.size(); ++i) {
    const double* factors = input.GetFactors(codes[i]);
    const double others =
        SumProducts<kCategories>(fOthers.Values(i), factors, fOthers.Categories());
    local.Add(others / (fvOwn[i] * factors[targets[i]]), ExponentOf(i), weights[i]);
  }
  sum = local;
}

void NBOdds::AddTerms(const NBayesInputBase& input, NBCodes codes, const std::int32_t* targets,
                      const double* weights, NBOddsSum& sum) const {
  const auto walk = [&](const auto* column) {
    switch (fOthers.Categories()) {
      case 2:
        return AddTermsOf<2>(input, column, targets, weights, sum);
      case 3:
        return AddTermsOf<3>(input, column, targets, weights, sum);
      default:
        return AddTermsOf<0>(input, column, targets, weights, sum);
    }
  };
  std::visit(walk, codes);
}
