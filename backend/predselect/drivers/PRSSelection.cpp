#include "backend/predselect/drivers/PRSSelection.h"

#include <algorithm>

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"

namespace {

MCFSCommon::RankCriteria CriterionInForce(const PRSValidSpecs& specs, const FSSettings& settings) {
  const bool allScale = settings.GetTypeAllPredictors() == MCFSCommon::kAllContinuous;
  if (specs.GetDependCatVar()) return allScale ? MCFSCommon::kFStat : specs.GetUniRank();
  return allScale ? MCFSCommon::kTStat : MCFSCommon::kFStat;
}

}  // namespace

bool PRSSelection::HasSignificance(MCFSCommon::RankCriteria criterion) {
  return criterion != MCFSCommon::kCramer && criterion != MCFSCommon::kLambda;
}

PRSSelection SelectPredictors(const PRSValidSpecs& specs, const IFSAlgorithm& algorithm) {
  const FSSettings& settings = *algorithm.GetSettings();
  PRSSelection selection;
  selection.fCriterion = CriterionInForce(specs, settings);
  const int size = specs.GetUniSize();
  const int nValid = settings.GetNPredictors() - algorithm.GetNDeletedPred();
  const int asked = std::min(size + specs.GetShowUnselect(), nValid);
  const MCFeature::MCStatus status = algorithm.GetTopPredictors(
      selection.fCriterion, selection.fIndices, selection.fValues, asked);
  if (status.IsError()) return selection;
  const bool significance = PRSSelection::HasSignificance(selection.fCriterion);
  const int nListed = static_cast<int>(selection.fIndices.size());
  for (int i = 0; i < std::min(size, nListed); ++i) {
    const double value = selection.fValues[static_cast<std::size_t>(i)];
    if (significance && (MCMV::IsMissing(value) || !(value < specs.GetUniPCutOff()))) break;
    ++selection.fNSelected;
  }
  const int shown = std::min(nListed, selection.fNSelected + specs.GetShowUnselect());
  selection.fIndices.resize(static_cast<std::size_t>(shown));
  selection.fValues.resize(static_cast<std::size_t>(shown));
  selection.fbLimited = specs.GetShowUnselect() > 0 && shown < nValid;
  return selection;
}
