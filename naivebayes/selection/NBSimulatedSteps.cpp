#include "naivebayes/selection/NBSimulatedSteps.h"

#include <algorithm>

#include "common/RecordBlock.h"
#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/model/NBNumerics.h"
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
                                   MCNaiveBayes::MCRandom& random, NBCancelInfo& cancel)
    : fModel(model), fNRecords(records), fRandom(random), fCancel(cancel) {}

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

bool NBSimulatedSteps::ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out) {
  std::vector<NBSum> sums(candidates.size());
  for (int left = fNRecords; left > 0 && !fCancel.IsCancel();) {
    const int drawn = std::min(left, static_cast<int>(MCCommon::RecordBlock::kMaxCases));
    fDrawn.Resize(fModel.fInputs.size(), drawn);
    for (int i = 0; i < drawn; ++i) Draw(fModel, fRandom, i, fDrawn);
    NBTerms::Add(fModel, fvCurrent, candidates, fDrawn.View(), sums);
    left -= drawn;
  }
  out.clear();
  for (const NBSum& sum : sums) out.push_back(-sum.Total() / fNRecords);
  return true;
}
