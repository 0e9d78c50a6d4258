#include "feature/accumulators/FSCatPCatTAccum.h"

#include <vector>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"
#include "feature/statistics/FSStatistics.h"

void FSCatPCatTAccum::Count(int predictor, int target, double weight) {
  fPredictorCounts.IncrementByFreq(predictor, weight);
  fTargetCounts.IncrementByFreq(target, weight);
  fJointCounts.IncrementByFreq({predictor, target}, weight);
}

void FSCatPCatTAccum::Add(int predictor, int target, double weight) {
  if (FSIsSmall(predictor) && target >= 0 && target < kFSSmallTargets) {
    fTable.Add(predictor, target, weight);
  } else {
    Count(predictor, target, weight);
  }
}

void FSCatPCatTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  Add(FSCategory(predictor), FSCategory(target), weight);
  fState.AddValid(FSCategory(predictor), weight);
}

void FSCatPCatTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPCatTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  const bool areWhole = !cases.fbUnitWeights || fState.HasWholeWeights();
  if (cases.fTargetSide > 0 && areWhole) {
    const std::size_t missing = AddTable(predictor, cases);
    FSCountBlock<FSCategories>(predictor, cases, missing, fState);
  } else {
    FSWalkBlock<FSCategories>(predictor, cases, fState, [&](std::size_t i, double x, double w) {
      Add(FSCategory(x), cases.fpTargetCategories[i], w);
    });
  }
}

// Returns how many are missing. What the table has no room for is counted by itself, and makes
// room.
std::size_t FSCatPCatTAccum::AddTable(const double* predictor, const FSCaseBlock& cases) {
  const std::size_t others = fTable.AddBlock(predictor, cases);
  if (others == 0) return 0;
  std::vector<std::size_t> left;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    if (!fTable.Holds(predictor[i]) && FSIsValidCategory(predictor[i])) left.push_back(i);
  }
  for (const std::size_t i : left) {
    Add(FSCategory(predictor[i]), cases.fpTargetCategories[i], cases.fpWeights[i]);
  }
  return others - left.size();
}

void FSCatPCatTAccum::EndPass() {
  fTable.Empty(
      [this](int predictor, int target, double weight) { Count(predictor, target, weight); });
}

void FSCatPCatTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                            const FSRecode& target) {
  const auto& other = static_cast<const FSCatPCatTAccum&>(accumulator);
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fPredictorCounts.Merge(other.fPredictorCounts, predictor);
  fTargetCounts.Merge(other.fTargetCounts, target);
  fJointCounts.Merge(other.fJointCounts, predictor, target);
}

std::size_t FSCatPCatTAccum::CheckAllReasons(const FSSettings* settings,
                                             std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fPredictorCounts, true, reasons);
  return reasons.size();
}

FSStatistics::ContingencyTable FSCatPCatTAccum::Counts() const {
  return {fPredictorCounts, fTargetCounts, fJointCounts, fState.GetValidWeight()};
}

FSScores FSCatPCatTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fCatCat, Counts(), wanted);
}

FSEffect FSCatPCatTAccum::ComputeEffect(MCFSCommon::RankCriteria ranking) const {
  FSEffect effect = FSEffects::OfTable(Counts(), ranking);
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

MCCommon::LeakTraits FSCatPCatTAccum::GetLeakTraits() const {
  return FSLeaks::OfPairs(fTargetCounts, fJointCounts, fState.GetCaseWeight());
}

FSProfile FSCatPCatTAccum::GetProfile() const {
  FSProfile profile;
  profile.fMissing = fState.GetMissingWeight();
  for (const auto& [pair, weight] : fJointCounts) {
    profile.fPairs.push_back({pair.first, pair.second, weight});
  }
  return profile;
}

void FSCatPCatTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPCatTAccum", fState);
  FSDisplay::Entries(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Entries(out, "Target categories", fTargetCounts);
  FSDisplay::Entries(out, "Pairs of predictor and target category", fJointCounts);
}
