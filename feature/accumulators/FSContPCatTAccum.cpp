#include "feature/accumulators/FSContPCatTAccum.h"

#include <cmath>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"

inline void FSContPCatTAccum::Add(FSPredictorState& state, double predictor, int target,
                                  double share, double weight) {
  if (const int by = fScale.FitFor(predictor); by != 0) Coarsen(by);
  const double value = fScale(predictor);
  fPredictorByTarget.Accumulate(target, value, weight);
  fMean += share * (value - fMean);
  state.AddValid(predictor, weight);
}

void FSContPCatTAccum::Coarsen(int by) {
  fMean = std::ldexp(fMean, -by);
  fPredictorByTarget.Coarsen(by);
}

void FSContPCatTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  const double share = weight / (fState.GetValidWeight() + weight);
  Add(fState, predictor, FSCategory(target), share, weight);
}

void FSContPCatTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContPCatTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  FSWalkBlock<FSNumbers>(predictor, cases, 0, fState,
                         [&](FSPredictorState& state, std::size_t i, double x, double w) {
                           const int target = cases.fpTargetCategories[i];
                           Add(state, x, target, FSShareOf(state, cases, i), w);
                         });
}

void FSContPCatTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&,
                             const FSRecode& target) {
  const auto& other = static_cast<const FSContPCatTAccum&>(accumulator);
  if (const int by = fScale.FitFor(other.fScale); by != 0) Coarsen(by);
  const int coarser = fScale.GetExponent() - other.fScale.GetExponent();
  fMean = FSMeanOfParts(fMean, fState.GetValidWeight(), std::ldexp(other.fMean, -coarser),
                        other.fState.GetValidWeight());
  fState.Merge(other.fState, other.fState.GetFirst());
  fPredictorByTarget.Merge(other.fPredictorByTarget, target, coarser);
}

double FSContPCatTAccum::OverallStddev() const {
  double sum = 0.0;
  for (const auto& [category, group] : fPredictorByTarget) {
    const double deviation = group.fMean - fMean;
    sum += group.fSquaredDeviations + group.fWeight * deviation * deviation;
  }
  return fScale.Back(std::sqrt(FSVariance(sum, fState.GetValidWeight(), 0.0)));
}

std::size_t FSContPCatTAccum::CheckAllReasons(const FSSettings* settings,
                                              std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckContinuous(*settings, fState, fScale.Back(fMean), OverallStddev(), reasons);
  return reasons.size();
}

FSScores FSContPCatTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fContCat,
                    FSGroupedValues{fPredictorByTarget, fMean, fState.GetValidWeight()}, wanted);
}

MCCommon::LeakTraits FSContPCatTAccum::GetLeakTraits() const {
  const double stddev = OverallStddev();
  return FSLeaks::OfPredictorByTarget(fPredictorByTarget, fState.GetCaseWeight(), stddev * stddev);
}

FSEffect FSContPCatTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfGroups({fPredictorByTarget, fMean, fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

void FSContPCatTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSContPCatTAccum", fState);
  FSDisplay::Value(out, "Mean", fScale.Back(fMean));
  FSDisplay::Entries(out, "Predictor by target category", fPredictorByTarget);
}
