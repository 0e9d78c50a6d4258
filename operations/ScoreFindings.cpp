#include "operations/ScoreFindings.h"

#include <algorithm>

#include "naivebayes/model/NBScoredBlock.h"
#include "naivebayes/variables/INBVariable.h"
#include "operations/FindingsParts.h"

namespace PredSelect {

namespace {

constexpr std::size_t kNBins = 20;  // of the probability of the predicted class

}  // namespace

ScoreFindings::ScoreFindings(const INBVariable& target)
    : fTarget(target),
      fPredicted(static_cast<std::size_t>(target.GetNumberOfCategories()), 0),
      fProbabilities(fPredicted.size(), 0.0),
      fSureness(kNBins, 0) {}

void ScoreFindings::Count(const NBScoredBlock& scored) {
  const std::size_t nTargets = fPredicted.size();
  for (std::size_t i = 0; i < scored.Cases(); ++i) {
    if (scored.GetWinners()[i] < 0) continue;
    const auto winner = static_cast<std::size_t>(scored.GetWinners()[i]);
    const double* probabilities = &scored.GetProbabilities()[i * nTargets];
    const auto bin = static_cast<std::size_t>(probabilities[winner] * kNBins);
    ++fNCases;
    ++fPredicted[winner];
    ++fSureness[std::min(bin, kNBins - 1)];
    for (std::size_t k = 0; k < nTargets; ++k) fProbabilities[k] += probabilities[k];
  }
}

std::string ScoreFindings::Text() const {
  Json means = Json::array();
  for (const double sum : fProbabilities) {
    means.push_back(fNCases > 0 ? Json(sum / static_cast<double>(fNCases)) : Json(nullptr));
  }
  return TextOf(
      {{"kind", "predictions"},
       {"target",
        {{"name", fTarget.GetVariableName()},
         {"label", fTarget.GetVariableLabel()},
         {"categories", CategoryTexts(fTarget, static_cast<int>(fPredicted.size()), nullptr)}}},
       {"cases", fNCases},
       {"predicted", fPredicted},
       {"means", std::move(means)},
       {"sureness", fSureness}});
}

}  // namespace PredSelect
