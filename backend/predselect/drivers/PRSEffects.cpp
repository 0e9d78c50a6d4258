#include "backend/predselect/drivers/PRSEffects.h"

#include "backend/predselect/drivers/PRSSelection.h"
#include "feature/IFSAlgorithm.h"
#include "feature/statistics/FSAdjust.h"
#include "feature/statistics/FSEffects.h"

MCFeature::MCStatus PRSFindEffects(const PRSValidSpecs& specs, const IFSAlgorithm& algorithm,
                                   PRSEffects& effects) {
  constexpr double kConfidence = 0.95;
  const PRSSelection selection = SelectPredictors(specs, algorithm);
  std::vector<int> ranked;
  std::vector<double> values;
  const MCFeature::MCStatus status =
      algorithm.GetTopPredictors(selection.fCriterion, ranked, values, 0);
  if (status.IsError()) return status;
  std::vector<double> logP;
  for (const int predictor : ranked) {
    logP.push_back(algorithm.GetPredictorEffect(selection.fCriterion, predictor).fLogP);
  }
  const std::vector<double> falseDiscovery = FSAdjust::BenjaminiHochberg(logP);
  const std::vector<double> familywise = FSAdjust::Holm(logP);
  effects.fNRanked = static_cast<int>(ranked.size());
  // What is shown are the first of those that are ranked.
  for (std::size_t i = 0; i < selection.fIndices.size(); ++i) {
    const FSEffect effect = algorithm.GetPredictorEffect(selection.fCriterion, ranked[i]);
    effects.fShown.push_back({ranked[i], effect, FSEffects::IntervalOf(effect, kConfidence),
                              falseDiscovery[i], familywise[i]});
  }
  return status;
}
