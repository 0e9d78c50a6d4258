#include "feature/accumulators/FSContPContTAccum.h"

#include <algorithm>
#include <cmath>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSMoments.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"

inline void FSContPContTAccum::Moments::Add(double x, double y, double share, double before,
                                            double weight) {
  const double dx = share * (x - fMeanX);
  const double dy = share * (y - fMeanY);
  fMeanX += dx;
  fMeanY += dy;
  fSxx += FSDeviationStep(dx, dx, before, weight);
  fSyy += FSDeviationStep(dy, dy, before, weight);
  fSxy += FSDeviationStep(dx, dy, before, weight);
}

void FSContPContTAccum::Moments::Merge(const Moments& other, double weight, double otherWeight) {
  const double dx = other.fMeanX - fMeanX;
  const double dy = other.fMeanY - fMeanY;
  fMeanX = FSMeanOfParts(fMeanX, weight, other.fMeanX, otherWeight);
  fMeanY = FSMeanOfParts(fMeanY, weight, other.fMeanY, otherWeight);
  fSxx += other.fSxx + FSDeviationOfParts(dx, dx, weight, otherWeight);
  fSyy += other.fSyy + FSDeviationOfParts(dy, dy, weight, otherWeight);
  fSxy += other.fSxy + FSDeviationOfParts(dx, dy, weight, otherWeight);
}

void FSContPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  const double before = fState.GetValidWeight();
  fMoments.Add(predictor, target, weight / (before + weight), before, weight);
  fState.AddValid(predictor, weight);
}

void FSContPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  Moments moments = fMoments;
  FSWalkBlock<FSNumbers>(
      predictor, cases, 0, fState, [&](FSPredictorState& state, std::size_t i, double x, double w) {
        moments.Add(x, cases.fpTargets[i], FSShareOf(state, cases, i), state.GetValidWeight(), w);
        state.AddValid(x, w);
      });
  fMoments = moments;
}

void FSContPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&,
                              const FSRecode&) {
  const auto& other = static_cast<const FSContPContTAccum&>(accumulator);
  fMoments.Merge(other.fMoments, fState.GetValidWeight(), other.fState.GetValidWeight());
  fState.Merge(other.fState, other.fState.GetFirst());
}

std::size_t FSContPContTAccum::CheckAllReasons(const FSSettings* settings,
                                               std::vector<int>& reasons) const {
  reasons.clear();
  const double stddev = std::sqrt(std::max(fPredictorVariance, 0.0));
  FSScreening::CheckContinuous(*settings, fState, fMoments.fMeanX, stddev, reasons);
  return reasons.size();
}

void FSContPContTAccum::ComputeVariances() {
  const double total = fState.GetValidWeight();
  fCorrelation = MCMV::gMissingValue;
  fPredictorVariance = FSVariance(fMoments.fSxx, total, 0.0);
  fTargetVariance = FSVariance(fMoments.fSyy, total, 0.0);
  if (!(fPredictorVariance > 0.0 && fTargetVariance > 0.0)) return;
  fCorrelation =
      fMoments.fSxy / (total - 1.0) / std::sqrt(fPredictorVariance) / std::sqrt(fTargetVariance);
}

FSScores FSContPContTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fContCont, FSCorrelation{fCorrelation, fState.GetValidWeight()},
                    wanted);
}

MCCommon::LeakTraits FSContPContTAccum::GetLeakTraits() const {
  const double cases = fState.GetValidWeight() / fState.GetCaseWeight();
  return FSLeaks::OfCorrelation(fCorrelation, cases, fPredictorVariance);
}

FSEffect FSContPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfCorrelation({fCorrelation, fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

void FSContPContTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSContPContTAccum", fState);
  FSDisplay::Value(out, "Mean of predictor", fMoments.fMeanX);
  FSDisplay::Value(out, "Squared deviations of predictor", fMoments.fSxx);
  FSDisplay::Value(out, "Mean of target", fMoments.fMeanY);
  FSDisplay::Value(out, "Squared deviations of target", fMoments.fSyy);
  FSDisplay::Value(out, "Cross deviations", fMoments.fSxy);
  FSDisplay::Value(out, "Variance of predictor", fPredictorVariance);
  FSDisplay::Value(out, "Variance of target", fTargetVariance);
  FSDisplay::Value(out, "Correlation", fCorrelation);
}
