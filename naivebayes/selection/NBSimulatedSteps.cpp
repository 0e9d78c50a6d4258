#include "naivebayes/selection/NBSimulatedSteps.h"

#include <algorithm>

#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/selection/NBChunks.h"
#include "naivebayes/selection/NBTerms.h"

namespace {

// Inversion: walks down the probabilities until the draw is used up, at most to the last category.
template <typename Probability>
int Walk(double u, int categories, Probability probability) {
  int category = 0;
  while (category < categories - 1 && u > probability(category)) u -= probability(category++);
  return category;
}

}  // namespace

NBSimulatedSteps::NBSimulatedSteps(const NBModelView& model, int records,
                                   MCNaiveBayes::MCRandom& random, NBCancelInfo& cancel,
                                   MCCommon::Workers& workers)
    : fModel(model), fNRecords(records), fRandom(random), fCancel(cancel), fWorkers(workers) {}

void NBSimulatedSteps::Enter(int input) {
  fvCurrent.insert(std::upper_bound(fvCurrent.begin(), fvCurrent.end(), input), input);
}

void NBSimulatedSteps::Draw(const NBModelView& model, MCNaiveBayes::MCRandom& random, std::size_t i,
                            NBCodeBuffer& records) {
  const std::vector<double>& priors = model.fOutput.GetPriors();
  const int target = Walk(random.GetRandom(), model.fOutput.GetNCategories(),
                          [&priors](int k) { return priors[k]; });
  records.fvTargets[i] = target;
  for (std::size_t j = 0; j < model.fInputs.size(); ++j) {
    const NBayesInput& input = model.fInputs[j];
    const int categories = input.GetNCategories();
    const int code = Walk(random.GetRandom(), categories,
                          [&input, target](int m) { return input.GetProbability(m, target); });
    records.fvCodes[j][i] = categories < 1 ? INBEncoder::kMissingCode : code;
  }
}

void NBSimulatedSteps::AddTerms(const NBCodeBlock& codes, const std::vector<int>& candidates,
                                std::vector<NBLogSum>& sums, NBLogSum& common) const {
  NBScaledProducts products;
  products.Reset(fModel.fOutput.GetPriors(), codes.Cases());
  for (int j : fvCurrent) products.Multiply(fModel.fInputs[j], codes.Codes(j));
  products.Align();
  std::vector<double> joint(codes.Cases());
  for (std::size_t i = 0; i < joint.size(); ++i) {
    joint[i] = products.SumOf(i);
    common.Add(joint[i], products.Exponent(i), 1.0);
  }
  const auto add = [&](std::size_t c, std::size_t) {
    NBLogSum sum = sums[c];  // which no other thread has beside its own
    NBTerms::ForEach(
        products, fModel.fInputs[candidates[c]], codes.Codes(candidates[c]),
        [&](std::size_t i, double x, int /*exponent*/) { sum.Add(x / joint[i], 0, 1.0); });
    sums[c] = sum;
  };
  fWorkers.For(joint.size() * products.Categories() * candidates.size())
      .ForEach(candidates.size(), add, [this] { return fCancel.IsCancel(); });
}

bool NBSimulatedSteps::ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                                 double& common) {
  std::vector<NBLogSum> sums(candidates.size());
  NBLogSum current;
  const auto most = static_cast<int>(NBChunks(fModel.fOutput.GetNCategories()).Most());
  for (int left = fNRecords; left > 0 && !fCancel.IsCancel();) {
    const int drawn = std::min(left, most);
    fDrawn.Resize(fModel.fInputs.size(), drawn);
    for (int i = 0; i < drawn && !fCancel.IsCancel(); ++i) Draw(fModel, fRandom, i, fDrawn);
    if (!fCancel.IsCancel()) AddTerms(fDrawn.View(), candidates, sums, current);
    left -= drawn;
  }
  out.clear();
  for (const NBLogSum& sum : sums) out.push_back(-sum.Total() / fNRecords);
  common = -current.Total() / fNRecords;
  return true;
}
