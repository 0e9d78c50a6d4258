#include "feature/accumulators/FSContAccum.h"

#include <cmath>

#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"

namespace {

constexpr int kAll = 0;  // the one group

}  // namespace

void FSContAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContAccum::AddCaseOneVariable(double predictor, double weight, bool update) {
  if (!(weight > 0.0)) return;
  if (update) fSums.Add(kAll, predictor, weight);
  fState.AddValid(predictor, weight);
}

void FSContAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  if (cases.fbSmallWeights) {
    fSums.FitFirst(cases.fNCases, [=](std::size_t i) {
      return FSIsValidNumber(predictor[i]) ? predictor[i] : 0.0;
    });
    const std::size_t missing = fSums.AddRun(kAll, cases.fNCases, {predictor, cases.RunWeights()});
    FSCountBlock<FSNumbers>(predictor, cases, missing, fState);
  } else {
    FSWalkBlock<FSNumbers>(predictor, cases, fState,
                           [this](std::size_t, double x, double w) { fSums.Add(kAll, x, w); });
  }
}

void FSContAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&, const FSRecode&) {
  const auto& other = static_cast<const FSContAccum&>(accumulator);
  fSums.Merge(other.fSums, FSRecode());
  fState.Merge(other.fState, other.fState.GetFirst());
}

std::size_t FSContAccum::CheckAllReasons(const FSSettings* settings,
                                         std::vector<int>& reasons) const {
  reasons.clear();
  const FSScale& scale = fSums.GetScale();
  FSScreening::CheckContinuous(*settings, fState, scale.Back(Moments().fMean.fValue),
                               scale.Back(std::sqrt(fVariance)), reasons);
  return reasons.size();
}

void FSContAccum::ComputeVariances() {
  EndPass();
  fVariance = FSVariance(Moments().fSquaredDeviations, fState.GetValidWeight(), fVariance);
}

void FSContAccum::Display(std::ostream& out) const {
  const FSGroupStats moments = Moments();
  const FSScale& scale = fSums.GetScale();
  FSDisplay::State(out, "FSContAccum", fState);
  FSDisplay::Value(out, "Mean", scale.Back(moments.fMean.fValue));
  FSDisplay::Value(out, "Squared deviations", scale.BackSquared(moments.fSquaredDeviations));
  FSDisplay::Value(out, "Variance", scale.BackSquared(fVariance));
}
