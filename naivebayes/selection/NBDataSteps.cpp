#include "naivebayes/selection/NBDataSteps.h"

#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/selection/NBTerms.h"

NBDataSteps::NBDataSteps(const NBModelView& model, double totalWeight, NBCodeStore& records,
                         NBCancelInfo& cancel)
    : fModel(model), fTotalWeight(totalWeight), fRecords(records), fCancel(cancel) {}

const NBScaledProducts& NBDataSteps::UpdateProducts(std::size_t block, const NBCodeBlock& codes) {
  if (block == fvProducts.size()) {
    fvProducts.emplace_back().Reset(fModel.fOutput.GetPriors(), codes.Cases());
  }
  NBScaledProducts& products = fvProducts[block];
  if (products.Records() == codes.Cases() && !fvEntered.empty()) {
    for (int j : fvEntered) products.Multiply(fModel.fInputs[j], codes.Codes(j));
    products.Align();
  }
  return products;
}

bool NBDataSteps::ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out) {
  std::vector<NBLogSum> sums(candidates.size());
  if (!fRecords.NewPass()) return false;
  for (std::size_t block = 0; !fCancel.IsCancel(); ++block) {
    const NBCodeBlock* codes = fRecords.NextCodes();
    if (codes == nullptr) break;
    const NBScaledProducts& products = UpdateProducts(block, *codes);
    if (products.Records() != codes->Cases()) return false;  // cut off by a failure
    const double* weights = codes->Weights();
    for (std::size_t c = 0; c < candidates.size(); ++c) {
      NBTerms::ForEach(products, fModel.fInputs[candidates[c]], codes->Codes(candidates[c]),
                       [&sum = sums[c], weights](std::size_t i, double x, int exponent) {
                         sum.Add(x, exponent, weights[i]);
                       });
    }
  }
  fvEntered.clear();
  out.clear();
  for (const NBLogSum& sum : sums) out.push_back(-sum.Total() / fTotalWeight);
  return !fRecords.HasFailed();
}
