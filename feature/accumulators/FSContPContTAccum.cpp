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
#include "feature/statistics/FSStatistics.h"

namespace {

double BackUnlessMissing(const FSScale& scale, double variance) {
  return MCMV::IsMissing(variance) ? variance : scale.BackSquared(variance);
}

}  // namespace

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

void FSContPContTAccum::Moments::Coarsen(int byX, int byY) {
  fMeanX = std::ldexp(fMeanX, -byX);
  fSxx = std::ldexp(fSxx, -2 * byX);
  fMeanY = std::ldexp(fMeanY, -byY);
  fSyy = std::ldexp(fSyy, -2 * byY);
  fSxy = std::ldexp(fSxy, -byX - byY);
}

inline void FSContPContTAccum::Add(FSPredictorState& state, Moments& moments, double x, double y,
                                   double share, double weight) {
  const int byX = fScaleX.FitFor(x), byY = fScaleY.FitFor(y);
  if (byX != 0 || byY != 0) moments.Coarsen(byX, byY);
  moments.Add(fScaleX(x), fScaleY(y), share, state.GetValidWeight(), weight);
  state.AddValid(x, weight);
}

void FSContPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  const double share = weight / (fState.GetValidWeight() + weight);
  Add(fState, fMoments, predictor, target, share, weight);
}

void FSContPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  Moments moments = fMoments;
  FSWalkBlock<FSNumbers>(
      predictor, cases, 0, fState, [&](FSPredictorState& state, std::size_t i, double x, double w) {
        Add(state, moments, x, cases.fpTargets[i], FSShareOf(state, cases, i), w);
      });
  fMoments = moments;
}

void FSContPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&,
                              const FSRecode&) {
  const auto& other = static_cast<const FSContPContTAccum&>(accumulator);
  fMoments.Coarsen(fScaleX.FitFor(other.fScaleX), fScaleY.FitFor(other.fScaleY));
  Moments theirs = other.fMoments;
  theirs.Coarsen(fScaleX.GetExponent() - other.fScaleX.GetExponent(),
                 fScaleY.GetExponent() - other.fScaleY.GetExponent());
  fMoments.Merge(theirs, fState.GetValidWeight(), other.fState.GetValidWeight());
  fState.Merge(other.fState, other.fState.GetFirst());
}

std::size_t FSContPContTAccum::CheckAllReasons(const FSSettings* settings,
                                               std::vector<int>& reasons) const {
  reasons.clear();
  const double stddev = fScaleX.Back(std::sqrt(std::max(fPredictorVariance, 0.0)));
  FSScreening::CheckContinuous(*settings, fState, fScaleX.Back(fMoments.fMeanX), stddev, reasons);
  return reasons.size();
}

void FSContPContTAccum::ComputeVariances() {
  const double total = fState.GetValidWeight();
  fCorrelation = MCMV::gMissingValue;
  fPredictorVariance = FSVariance(fMoments.fSxx, total, 0.0);
  fTargetVariance = FSVariance(fMoments.fSyy, total, 0.0);
  if (fPredictorVariance > 0.0 && fTargetVariance > 0.0) fCorrelation = Correlation(total);
}

double FSContPContTAccum::Correlation(double total) const {
  const double r =
      fMoments.fSxy / (total - 1.0) / std::sqrt(fPredictorVariance) / std::sqrt(fTargetVariance);
  const double limit =
      FSStatistics::PerfectFrom(total, fMoments.fMeanX * fMoments.fMeanX / fPredictorVariance,
                                fMoments.fMeanY * fMoments.fMeanY / fTargetVariance);
  return 1.0 - r * r <= limit ? std::copysign(1.0, r) : r;
}

FSScores FSContPContTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fContCont, FSCorrelation{fCorrelation, fState.GetValidWeight()},
                    wanted);
}

MCCommon::LeakTraits FSContPContTAccum::GetLeakTraits() const {
  const double cases = fState.GetValidWeight() / fState.GetCaseWeight();
  return FSLeaks::OfCorrelation(fCorrelation, cases,
                                BackUnlessMissing(fScaleX, fPredictorVariance));
}

FSEffect FSContPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfCorrelation({fCorrelation, fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

void FSContPContTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSContPContTAccum", fState);
  FSDisplay::Value(out, "Mean of predictor", fScaleX.Back(fMoments.fMeanX));
  FSDisplay::Value(out, "Squared deviations of predictor", fScaleX.BackSquared(fMoments.fSxx));
  FSDisplay::Value(out, "Mean of target", fScaleY.Back(fMoments.fMeanY));
  FSDisplay::Value(out, "Squared deviations of target", fScaleY.BackSquared(fMoments.fSyy));
  FSDisplay::Value(out, "Cross deviations", fScaleX.Back(fScaleY.Back(fMoments.fSxy)));
  FSDisplay::Value(out, "Variance of predictor", BackUnlessMissing(fScaleX, fPredictorVariance));
  FSDisplay::Value(out, "Variance of target", BackUnlessMissing(fScaleY, fTargetVariance));
  FSDisplay::Value(out, "Correlation", fCorrelation);
}
