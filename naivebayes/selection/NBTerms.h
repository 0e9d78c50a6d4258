// The terms D of a subset with one more predictor, for a block of cases: the inner loop of every
// forward step.
#pragma once

#include <cstddef>
#include <vector>

#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/model/NBayesInputBase.h"
#include "naivebayes/store/NBCodeBlock.h"

namespace NBTerms {

// As ForEach, with the number of target categories known to the compiler where it is small.
template <int kCategories, typename Code, typename Visit>
void ForEachOf(const NBScaledProducts& products, const NBayesInputBase& input, const Code* codes,
               Visit visit) {
  const std::size_t n = kCategories > 0 ? kCategories : products.Categories();
  for (std::size_t i = 0; i < products.Records(); ++i) {
    const double* values = products.Values(i);
    const double* factors = input.GetFactors(codes[i]);
    double sum = 0;
    for (std::size_t k = 0; k < n; ++k) sum += values[k] * factors[k];
    visit(i, sum, products.Exponent(i));
  }
}

// Calls visit(i, x, exponent) for each case i, where x * 2^exponent is the sum over the target
// categories of the products times the input's factors. REQUIRES: products are aligned.
template <typename Visit>
void ForEach(const NBScaledProducts& products, const NBayesInputBase& input, NBCodes codes,
             Visit visit) {
  const auto walk = [&](const auto* column) {
    switch (products.Categories()) {
      case 2:
        return ForEachOf<2>(products, input, column, visit);
      case 3:
        return ForEachOf<3>(products, input, column, visit);
      default:
        return ForEachOf<0>(products, input, column, visit);
    }
  };
  std::visit(walk, codes);
}

// Adds D(x, the subset and the candidate) of each case, without its weight, to the candidate's sum.
void Add(const NBModelView& model, const std::vector<int>& subset,
         const std::vector<int>& candidates, const NBCodeBlock& codes, std::vector<NBSum>& sums);

}  // namespace NBTerms
