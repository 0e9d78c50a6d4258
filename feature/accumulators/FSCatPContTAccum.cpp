#include "feature/accumulators/FSCatPContTAccum.h"

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"

void FSCatPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  fSums.Add(FSCategory(predictor), target, weight);
  fState.AddValid(FSCategory(predictor), weight);
}

void FSCatPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  if (FSMayShare(cases, fState) && cases.fbOrdinaryTargets && fSums.IsOrdinary()) {
    AddShared(predictor, cases);
  } else {
    FSWalkBlock<FSCategories>(predictor, cases, fState, [&](std::size_t i, double x, double w) {
      fSums.Add(FSCategory(x), cases.fpTargets[i], w);
    });
  }
}

void FSCatPContTAccum::AddShared(const double* predictor, const FSCaseBlock& cases) {
  std::size_t missing = 0;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    if (value > -1.0 && value < kFSSmallCategories) [[likely]] {
      fSums.AddOrdinary(static_cast<int>(value), cases.fpTargets[i]);
    } else if (FSIsValidCategory(value)) {
      fSums.Add(FSCategory(value), cases.fpTargets[i], 1.0);
    } else {
      ++missing;
    }
  }
  FSCountBlock<FSCategories>(predictor, cases, missing, fState);
}

void FSCatPContTAccum::EndPass() {
  fSums.Settle();
  fTargetMean = fSums.GetMoments().Together().fMean.fValue;
  fPredictorCounts.Clear();
  for (const auto& [category, group] : fSums.GetMoments()) {
    fPredictorCounts.IncrementByFreq(category, group.fWeight);
  }
}

void FSCatPContTAccum::ComputeVariances() {
  EndPass();
  fSums.ComputeVariances();
}

void FSCatPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                             const FSRecode&) {
  const auto& other = static_cast<const FSCatPContTAccum&>(accumulator);
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fSums.Merge(other.fSums, predictor);
  EndPass();
}

std::size_t FSCatPContTAccum::CheckAllReasons(const FSSettings* settings,
                                              std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fPredictorCounts, false, reasons);
  return reasons.size();
}

FSScores FSCatPContTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fCatCont,
                    FSGroupedValues{fSums.GetMoments(), fState.GetValidWeight()}, wanted);
}

MCCommon::LeakTraits FSCatPContTAccum::GetLeakTraits() const {
  return FSLeaks::OfTargetByCategory(fSums.GetMoments(), fState.GetCaseWeight());
}

FSEffect FSCatPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfGroups({fSums.GetMoments(), fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

FSProfile FSCatPContTAccum::GetProfile() const {
  FSProfile profile;
  profile.fMissing = fState.GetMissingWeight();
  profile.fGroups = fSums.Groups();
  return profile;
}

void FSCatPContTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPContTAccum", fState);
  FSDisplay::Value(out, "Target mean", fSums.GetScale().Back(fTargetMean));
  FSDisplay::Entries(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Entries(out, "Target by predictor category", fSums.GetMoments());
}
