#include "modelfiles/StateSense.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "feature/FSAlgorithm.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSMaps.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/NBAlgorithm.h"

namespace MCModelFiles {

namespace {

bool IsCodeOf(const StateVariable& variable, int code) {
  return code >= 0 && code < variable.GetNCategories();
}

bool HasCategoriesOf(const StateVariable& predictor, const FSMapICnt* counted) {
  return counted == nullptr ||
         std::all_of(counted->begin(), counted->end(),
                     [&](const auto& entry) { return IsCodeOf(predictor, entry.first); });
}

bool HasTargetsOf(const StateVariable& target, const IFSAlgorithm& component) {
  for (int position = 0; position < component.GetNTargetCategories(); ++position) {
    int code = -1;
    std::pair<int, double> counts;
    if (!component.GetTargetCategoryInfo(position, code, counts) || !IsCodeOf(target, code)) {
      return false;
    }
  }
  return true;
}

bool IsDictionaryOf(const StateDictionary& dictionary, const IFSAlgorithm& component) {
  const FSSettings& settings = *component.GetSettings();
  const std::vector<StateVariable>& predictors = dictionary.fPredictors;
  if (settings.GetNPredictors() != static_cast<int>(predictors.size())) return false;
  if ((settings.GetWeightPosition() < 0) != dictionary.fWeight.empty()) return false;
  const auto* counts = dynamic_cast<const FSAlgorithm*>(&component);
  for (int j = 0; j < settings.GetNPredictors(); ++j) {
    const StateVariable& predictor = predictors[static_cast<std::size_t>(j)];
    if (settings.IsCatPredictor(j) != predictor.fbCategorical) return false;
    if (!HasCategoriesOf(predictor, counts->GetPredictorCategories(j))) return false;
  }
  return settings.IsCatTarget() == dictionary.fTarget.fbCategorical &&
         HasTargetsOf(dictionary.fTarget, component);
}

bool IsEstimate(double stored, double computed) {
  constexpr double kRounding = 1e-9;
  return std::abs(stored - computed) <= kRounding * computed;
}

bool AreEstimates(const NBayesInput& stored, double weight) {
  NBayesInput computed = stored;
  if (computed.ComputeProbabilities(weight) != stored.GetNNonEmpty()) return false;
  for (int m = 0; m < stored.GetNCategories(); ++m) {
    for (int k = 0; k < stored.GetNTargetCategories(); ++k) {
      if (!IsEstimate(stored.GetProbability(m, k), computed.GetProbability(m, k))) return false;
    }
  }
  return true;
}

bool AreEstimates(const NBAlgorithm& model) {
  const double weight = model.GetTotalWeight();
  NBayesOutput computed = model.GetOutput();
  computed.ComputeProbabilities(weight);
  return std::ranges::equal(model.GetOutput().GetPriors(), computed.GetPriors(), IsEstimate) &&
         std::ranges::all_of(model.GetInputs(), [weight](const NBayesInput& input) {
           return AreEstimates(input, weight);
         });
}

}  // namespace

bool MakesSense(const ComponentFile& file) {
  if (file.fpNaive != nullptr) return AreEstimates(dynamic_cast<const NBAlgorithm&>(*file.fpNaive));
  return !file.fDictionary || IsDictionaryOf(*file.fDictionary, *file.fpFeature);
}

}  // namespace MCModelFiles
