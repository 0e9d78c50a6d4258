#include "naivebayes/selection/NBTerms.h"

namespace NBTerms {

void Add(const NBModelView& model, const std::vector<int>& subset,
         const std::vector<int>& candidates, const NBCodeBlock& codes, std::vector<NBSum>& sums) {
  NBScaledProducts products;
  products.Reset(model.fOutput.GetPriors(), codes.Cases());
  for (int j : subset) products.Multiply(model.fInputs[j], codes.Codes(j));
  products.Align();
  for (std::size_t c = 0; c < candidates.size(); ++c) {
    ForEach(products, model.fInputs[candidates[c]], codes.Codes(candidates[c]),
            [&sum = sums[c]](std::size_t /*i*/, double x, int exponent) {
              NBLogSum term;
              term.Add(x, exponent, 1.0);
              sum.Add(term.Total());
            });
  }
}

}  // namespace NBTerms
