#include "backend/predselect/drivers/PRSSelection.h"

#include <algorithm>

#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"
#include "feature/IFSAlgorithm.h"

PRSSelection SelectPredictors(const PRSValidSpecs& specs, const IFSAlgorithm& algorithm) {
  const FSSettings& settings = *algorithm.GetSettings();
  PRSSelection selection;
  selection.fCriterion = settings.GetMainCriterion(specs.GetUniRank());
  const int nValid = settings.GetNPredictors() - algorithm.GetNDeletedPred();
  // Either may be as large as a number can be; their sum may not.
  const int size = std::min(specs.GetUniSize(), nValid);
  const int nMore = std::min(specs.GetShowUnselect(), nValid);
  const int asked = std::min(size + nMore, nValid);
  const MCFeature::MCStatus status = algorithm.GetTopPredictors(
      selection.fCriterion, selection.fIndices, selection.fValues, asked);
  FSThrowWantOfMemory(status);
  if (status.IsError()) return selection;
  const bool significance = FSCriterion::Of(selection.fCriterion).HasSignificance();
  const int nListed = static_cast<int>(selection.fIndices.size());
  for (int i = 0; i < std::min(size, nListed); ++i) {
    const double value = selection.fValues[static_cast<std::size_t>(i)];
    if (significance && (MCMV::IsMissing(value) || !(value < specs.GetUniPCutOff()))) break;
    ++selection.fNSelected;
  }
  const int shown = std::min(nListed, selection.fNSelected + nMore);
  selection.fIndices.resize(static_cast<std::size_t>(shown));
  selection.fValues.resize(static_cast<std::size_t>(shown));
  selection.fbLimited = specs.GetShowUnselect() > 0 && shown < nValid;
  return selection;
}
