#include "feature/accumulators/FSCatAccum.h"

#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"

void FSCatAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatAccum::AddCaseOneVariable(double predictor, double weight, bool update) {
  if (!(weight > 0.0)) return;
  const int category = FSCategory(predictor);
  if (update) fCounts.IncrementByFreq(category, weight);
  fState.AddValid(category, weight);
}

void FSCatAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  FSWalkBlock<FSCategories>(predictor, cases, fState, [this](std::size_t, double x, double w) {
    fCounts.IncrementByFreq(FSCategory(x), w);
  });
}

void FSCatAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                       const FSRecode&) {
  const auto& other = static_cast<const FSCatAccum&>(accumulator);
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fCounts.Merge(other.fCounts, predictor);
}

std::size_t FSCatAccum::CheckAllReasons(const FSSettings* settings,
                                        std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fCounts, true, reasons);
  return reasons.size();
}

void FSCatAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatAccum", fState);
  FSDisplay::Entries(out, "Predictor categories", fCounts);
}
