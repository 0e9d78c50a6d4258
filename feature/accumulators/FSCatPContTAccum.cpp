#include "feature/accumulators/FSCatPContTAccum.h"

#include <cmath>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"

inline void FSCatPContTAccum::Add(FSPredictorState& state, int predictor, double target,
                                  double share, double weight) {
  if (const int by = fScale.FitFor(target); by != 0) Coarsen(by);
  const double value = fScale(target);
  fPredictorCounts.IncrementByFreq(predictor, weight);
  fTargetByCategory.Accumulate(predictor, value, weight);
  fTargetMean += share * (value - fTargetMean);
  state.AddValid(predictor, weight);
}

void FSCatPContTAccum::Coarsen(int by) {
  fTargetMean = std::ldexp(fTargetMean, -by);
  fTargetByCategory.Coarsen(by);
}

void FSCatPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  const double share = weight / (fState.GetValidWeight() + weight);
  Add(fState, FSCategory(predictor), target, share, weight);
}

void FSCatPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  FSWalkBlock<FSCategories>(
      predictor, cases, 0, fState, [&](FSPredictorState& state, std::size_t i, double x, double w) {
        Add(state, FSCategory(x), cases.fpTargets[i], FSShareOf(state, cases, i), w);
      });
}

void FSCatPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                             const FSRecode&) {
  const auto& other = static_cast<const FSCatPContTAccum&>(accumulator);
  if (const int by = fScale.FitFor(other.fScale); by != 0) Coarsen(by);
  const int coarser = fScale.GetExponent() - other.fScale.GetExponent();
  fTargetMean =
      FSMeanOfParts(fTargetMean, fState.GetValidWeight(), std::ldexp(other.fTargetMean, -coarser),
                    other.fState.GetValidWeight());
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fPredictorCounts.Merge(other.fPredictorCounts, predictor);
  fTargetByCategory.Merge(other.fTargetByCategory, predictor, coarser);
}

std::size_t FSCatPContTAccum::CheckAllReasons(const FSSettings* settings,
                                              std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fPredictorCounts, false, reasons);
  return reasons.size();
}

FSScores FSCatPContTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fCatCont,
                    FSGroupedValues{fTargetByCategory, fTargetMean, fState.GetValidWeight()},
                    wanted);
}

MCCommon::LeakTraits FSCatPContTAccum::GetLeakTraits() const {
  return FSLeaks::OfTargetByCategory(fTargetByCategory, fState.GetCaseWeight());
}

FSEffect FSCatPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfGroups({fTargetByCategory, fTargetMean, fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

void FSCatPContTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPContTAccum", fState);
  FSDisplay::Value(out, "Target mean", fScale.Back(fTargetMean));
  FSDisplay::Entries(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Entries(out, "Target by predictor category", fTargetByCategory);
}
