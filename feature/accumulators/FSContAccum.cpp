#include "feature/accumulators/FSContAccum.h"

#include <cmath>

#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSMoments.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"

inline void FSContAccum::Add(FSPredictorState& state, double predictor, double weight) {
  if (const int by = fScale.FitFor(predictor); by != 0) Coarsen(by);
  const double before = state.GetValidWeight();
  const double step = FSMeanStep(fScale(predictor), fMean, before, weight);
  fMean += step;
  fSquaredDeviations += FSDeviationStep(step, step, before, weight);
  state.AddValid(predictor, weight);
}

void FSContAccum::Coarsen(int by) {
  fMean = std::ldexp(fMean, -by);
  fSquaredDeviations = std::ldexp(fSquaredDeviations, -2 * by);
}

void FSContAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContAccum::AddCaseOneVariable(double predictor, double weight, bool update) {
  if (!(weight > 0.0)) return;
  if (update) {
    Add(fState, predictor, weight);
  } else {
    fState.AddValid(predictor, weight);
  }
}

void FSContAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  FSWalkBlock<FSNumbers>(
      predictor, cases, 0, fState,
      [this](FSPredictorState& state, std::size_t, double x, double w) { Add(state, x, w); });
}

void FSContAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&, const FSRecode&) {
  FSContAccum other = static_cast<const FSContAccum&>(accumulator);
  Coarsen(fScale.FitFor(other.fScale));
  other.Coarsen(fScale.GetExponent() - other.fScale.GetExponent());
  const double weight = fState.GetValidWeight();
  const double otherWeight = other.fState.GetValidWeight();
  const double distance = other.fMean - fMean;
  fMean = FSMeanOfParts(fMean, weight, other.fMean, otherWeight);
  fSquaredDeviations +=
      other.fSquaredDeviations + FSDeviationOfParts(distance, distance, weight, otherWeight);
  fState.Merge(other.fState, other.fState.GetFirst());
}

std::size_t FSContAccum::CheckAllReasons(const FSSettings* settings,
                                         std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckContinuous(*settings, fState, fScale.Back(fMean),
                               fScale.Back(std::sqrt(fVariance)), reasons);
  return reasons.size();
}

void FSContAccum::ComputeVariances() {
  fVariance = FSVariance(fSquaredDeviations, fState.GetValidWeight(), fVariance);
}

void FSContAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSContAccum", fState);
  FSDisplay::Value(out, "Mean", fScale.Back(fMean));
  FSDisplay::Value(out, "Squared deviations", fScale.BackSquared(fSquaredDeviations));
  FSDisplay::Value(out, "Variance", fScale.BackSquared(fVariance));
}
