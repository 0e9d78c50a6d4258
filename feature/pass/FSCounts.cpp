#include "feature/pass/FSCounts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "feature/FSSettings.h"
#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSCatAccum.h"
#include "feature/accumulators/FSCatPCatTAccum.h"
#include "feature/accumulators/FSCatPContTAccum.h"
#include "feature/accumulators/FSContAccum.h"
#include "feature/accumulators/FSContPCatTAccum.h"
#include "feature/accumulators/FSContPContTAccum.h"
#include "feature/accumulators/FSRecode.h"

using MCFeature::MCStatus;

FSCounts::FSCounts(const FSSettings* settings) : fpSettings(settings) {}

std::unique_ptr<IFSPredTargetAccum> FSCounts::NewAccumulator(int predictor) const {
  const bool catTarget = fpSettings->IsCatTarget();
  if (fpSettings->IsCatPredictor(predictor)) {
    if (!fbWithTarget) return std::make_unique<FSCatAccum>();
    if (catTarget) return std::make_unique<FSCatPCatTAccum>();
    return std::make_unique<FSCatPContTAccum>();
  }
  if (!fbWithTarget) return std::make_unique<FSContAccum>();
  if (catTarget) return std::make_unique<FSContPCatTAccum>();
  return std::make_unique<FSContPContTAccum>();
}

void FSCounts::Start(int nPredictors, bool withTarget) {
  fbComplete = false;
  if (!fAccumulators.empty()) return;
  fbWithTarget = withTarget;
  for (int j = 0; j < nPredictors; ++j) fAccumulators.push_back(NewAccumulator(j));
}

void FSCounts::EndPass() {
  for (const auto& accumulator : fAccumulators) {
    if (accumulator) accumulator->EndPass();
  }
}

void FSCounts::Complete() {
  if (fbComplete) return;
  for (const auto& accumulator : fAccumulators) {
    if (accumulator) accumulator->ComputeVariances();
  }
  fKnown.clear();
  fbComplete = true;
}

void FSCounts::CountValid(double weight, double target, bool withTarget) {
  fbNoValidData = false;
  ++fNValidCases;
  fValidWeight += weight;
  if (withTarget && fpSettings->IsCatTarget()) {
    fTargetCategories.IncrementByFreq(FSCategory(target), weight);
  }
}

void FSCounts::CountValidCases(const FSCaseBlock& cases) {
  fbNoValidData = fbNoValidData && cases.fNCases == 0;
  fNValidCases += static_cast<int>(cases.fNCases);
  fValidWeight = cases.AddWeightsTo(fValidWeight);
}

void FSCounts::CountExcluded(double weight) {
  ++fNExcludedCases;
  fExcludedWeight += weight;
}

int FSCounts::CasesLeft(int maxRecords) const {
  const std::int64_t free =
      std::int64_t{std::numeric_limits<int>::max()} - fNValidCases - fNExcludedCases;
  const int most = static_cast<int>(std::max<std::int64_t>(free, 0));
  return maxRecords < 0 ? most : std::min(maxRecords, most);
}

MCStatus FSCounts::Verdict(bool weighted, bool warn) const {
  if (!std::isfinite(fValidWeight + fExcludedWeight)) {
    return MCFeature::Error(MCFeature::kWeightsTooLarge);
  }
  if (weighted && fbNoValidWeight) return {MCFeature::kNoValidWeight, warn};
  if (fbNoValidData) return {MCFeature::kAllCasesExcluded, warn};
  return {};
}

const FSScore& FSCounts::ScoreOf(std::size_t predictor, MCFSCommon::RankCriteria criterion) const {
  fKnown.resize(fAccumulators.size());
  Known& known = fKnown[predictor];
  if (!fbComplete || !known.fCriteria[criterion]) {
    known.fCriteria = fpSettings->GetCriteria();
    known.fCriteria[criterion] = true;
    known.fScores = fAccumulators[predictor]->ComputeScores(known.fCriteria);
  }
  return known.fScores[criterion];
}

void FSCounts::Merge(const FSCounts& other, const FSCategoryMaps* maps) {
  Start(static_cast<int>(other.Size()), other.fbWithTarget);
  const FSRecode target = FSTargetRecode(maps);
  for (std::size_t j = 0; j < fAccumulators.size(); ++j) {
    fAccumulators[j]->Merge(*other.fAccumulators[j], FSPredictorRecode(maps, j), target);
  }
  fTargetCategories.Merge(other.fTargetCategories, target);
  fbNoValidWeight = fbNoValidWeight && other.fbNoValidWeight;
  fbNoValidData = fbNoValidData && other.fbNoValidData;
  fValidWeight += other.fValidWeight;
  fExcludedWeight += other.fExcludedWeight;
  fNValidCases += other.fNValidCases;
  fNExcludedCases += other.fNExcludedCases;
}

void FSCounts::GetNValidNExcluded(double& validWeight, double& excludedWeight, int& validCases,
                                  int& excludedCases) const {
  validWeight = fValidWeight;
  excludedWeight = fExcludedWeight;
  validCases = fNValidCases;
  excludedCases = fNExcludedCases;
}
