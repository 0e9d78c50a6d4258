#include "feature/accumulators/FSContPContTAccum.h"

#include <algorithm>
#include <cmath>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
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

void FSContPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  fSums.Add(predictor, target, weight);
  fState.AddValid(predictor, weight);
}

void FSContPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  if (cases.fbSmallWeights && cases.fbOrdinaryTargets) {
    FSCountBlock<FSNumbers>(predictor, cases, AddShared(predictor, cases), fState);
  } else {
    FSWalkBlock<FSNumbers>(predictor, cases, fState, [&](std::size_t i, double x, double w) {
      fSums.Add(x, cases.fpTargets[i], w);
    });
  }
}

// As long as no value has been missing, the target's own sums serve. Returns the missing ones.
std::size_t FSContPContTAccum::AddShared(const double* predictor, const FSCaseBlock& cases) {
  fSums.FitFirst(cases.fNCases, predictor, cases.fpTargets);
  std::size_t taken = 0;
  if (fSums.IsOrdinary() && fSums.HasAllOf(cases.fNBefore)) {
    for (const FSTargetPiece& piece : cases.fPieces) {
      if (!fSums.AddPiece(piece, predictor, cases.fpTargetSteps, cases.RunWeights())) break;
      taken = piece.fEnd;
    }
  }
  return fSums.AddRun(cases.fNCases - taken, predictor + taken, cases.fpTargets + taken,
                      cases.fpWeights + taken);
}

void FSContPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&,
                              const FSRecode&) {
  const auto& other = static_cast<const FSContPContTAccum&>(accumulator);
  fSums.Merge(other.fSums);
  fState.Merge(other.fState, other.fState.GetFirst());
}

std::size_t FSContPContTAccum::CheckAllReasons(const FSSettings* settings,
                                               std::vector<int>& reasons) const {
  reasons.clear();
  const FSScale& scale = fSums.GetScaleX();
  const double stddev = scale.Back(std::sqrt(std::max(fPredictorVariance, 0.0)));
  const double mean = scale.Back(fSums.GetMoments().fMeanX.fValue);
  FSScreening::CheckContinuous(*settings, fState, mean, stddev, reasons);
  return reasons.size();
}

void FSContPContTAccum::ComputeVariances() {
  EndPass();
  const double total = fState.GetValidWeight();
  fCorrelation = MCMV::gMissingValue;
  fPredictorVariance = FSVariance(fSums.GetMoments().fSxx, total, 0.0);
  fTargetVariance = FSVariance(fSums.GetMoments().fSyy, total, 0.0);
  const auto serves = [](double variance) { return variance > 0.0 && !MCMV::IsMissing(variance); };
  if (serves(fPredictorVariance) && serves(fTargetVariance)) fCorrelation = Correlation(total);
}

double FSContPContTAccum::Correlation(double total) const {
  const FSPairStats& moments = fSums.GetMoments();
  const double r =
      moments.fSxy / (total - 1.0) / std::sqrt(fPredictorVariance) / std::sqrt(fTargetVariance);
  const double x = moments.fMeanX.fValue, y = moments.fMeanY.fValue;
  const double limit =
      FSStatistics::PerfectFrom(total, x * x / fPredictorVariance, y * y / fTargetVariance);
  return 1.0 - r * r <= limit ? std::copysign(1.0, r) : r;
}

FSScores FSContPContTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fContCont, FSCorrelation{fCorrelation, fState.GetValidWeight()},
                    wanted);
}

MCCommon::LeakTraits FSContPContTAccum::GetLeakTraits() const {
  const double cases = fState.GetValidWeight() / fState.GetCaseWeight();
  return FSLeaks::OfCorrelation(fCorrelation, cases,
                                BackUnlessMissing(fSums.GetScaleX(), fPredictorVariance));
}

FSEffect FSContPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfCorrelation({fCorrelation, fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

FSProfile FSContPContTAccum::GetProfile() const {
  const FSPairStats& moments = fSums.GetMoments();
  const FSScale &x = fSums.GetScaleX(), &y = fSums.GetScaleY();
  FSProfile profile;
  profile.fMissing = fState.GetMissingWeight();
  profile.fLine = {fState.GetValidWeight(),
                   x.Back(moments.fMeanX.fValue),
                   x.Back(std::sqrt(std::max(fPredictorVariance, 0.0))),
                   y.Back(moments.fMeanY.fValue),
                   y.Back(std::sqrt(std::max(fTargetVariance, 0.0))),
                   fCorrelation};
  return profile;
}

void FSContPContTAccum::Display(std::ostream& out) const {
  const FSPairStats& moments = fSums.GetMoments();
  const FSScale &x = fSums.GetScaleX(), &y = fSums.GetScaleY();
  FSDisplay::State(out, "FSContPContTAccum", fState);
  FSDisplay::Value(out, "Mean of predictor", x.Back(moments.fMeanX.fValue));
  FSDisplay::Value(out, "Squared deviations of predictor", x.BackSquared(moments.fSxx));
  FSDisplay::Value(out, "Mean of target", y.Back(moments.fMeanY.fValue));
  FSDisplay::Value(out, "Squared deviations of target", y.BackSquared(moments.fSyy));
  FSDisplay::Value(out, "Cross deviations", x.Back(y.Back(moments.fSxy)));
  FSDisplay::Value(out, "Variance of predictor", BackUnlessMissing(x, fPredictorVariance));
  FSDisplay::Value(out, "Variance of target", BackUnlessMissing(y, fTargetVariance));
  FSDisplay::Value(out, "Correlation", fCorrelation);
}
