#include "feature/accumulators/FSCatPContTAccum.h"

#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDenseFront.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"

inline void FSCatPContTAccum::Add(FSPredictorState& state, int predictor, double target,
                                  double weight) {
  fPredictorCounts.IncrementByFreq(predictor, weight);
  fTargetByCategory.Accumulate(predictor, target, weight);
  fTargetMean += FSMeanStep(target, fTargetMean, state.GetValidWeight(), weight);
  state.AddValid(predictor, weight);
}

void FSCatPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (weight > 0.0) Add(fState, FSCategory(predictor), target, weight);
}

void FSCatPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  FSWalkBlock<FSCategories>(predictor, cases, AddBlockDense(predictor, cases), fState,
                            [&](FSPredictorState& state, std::size_t i, double x, double w) {
                              Add(state, FSCategory(x), cases.fpTargets[i], w);
                            });
}

// Whether the predictor has had a value in every case so far, so that its mean of the target is the
// one of all cases.
bool FSCatPContTAccum::IsWithoutGap(const FSCaseBlock& cases) const {
  return cases.fNCases > 0 && fState.GetMissingWeight() == 0.0 &&
         fState.GetTotalWeight() == cases.fpWeightsBefore[0] &&
         fTargetMean == cases.fTargetMeanBefore;
}

// Takes the cases up to the first whose predictor category is not small; returns that case. Cases
// before the first missing value need no mean of their own.
std::size_t FSCatPContTAccum::AddBlockDense(const double* predictor, const FSCaseBlock& cases) {
  FSDenseFront<FSMapIStat, FSGroupStats> groups(fTargetByCategory);
  const double* const targets = cases.fpTargets;
  std::size_t end = 0;
  if (IsWithoutGap(cases)) {
    end = FSWalkBlock<FSSmallCategoriesWithoutGap>(
        predictor, cases, 0, fState,
        [&](FSPredictorState& state, std::size_t i, double x, double w) {
          const int category = static_cast<int>(x);
          groups[category].Add(targets[i], w);
          state.AddValid(category, w);
        });
    if (end > 0) fTargetMean = cases.fpTargetMeans[end - 1];
  }
  double mean = fTargetMean;
  end = FSWalkBlock<FSSmallCategories>(
      predictor, cases, end, fState,
      [&](FSPredictorState& state, std::size_t i, double x, double w) {
        const int category = static_cast<int>(x);
        const double target = targets[i];
        groups[category].Add(target, w);
        mean += FSShareOf(state, cases, i) * (target - mean);
        state.AddValid(category, w);
      });
  fTargetMean = mean;
  groups.PutBack();
  // A category's count is the weight of its group: the same sum in the same order.
  for (const auto& [category, group] : fTargetByCategory) {
    fPredictorCounts.Set(category, group.fWeight);
  }
  return end;
}

void FSCatPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                             const FSRecode&) {
  const auto& other = static_cast<const FSCatPContTAccum&>(accumulator);
  fTargetMean = FSMeanOfParts(fTargetMean, fState.GetValidWeight(), other.fTargetMean,
                              other.fState.GetValidWeight());
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fPredictorCounts.Merge(other.fPredictorCounts, predictor);
  fTargetByCategory.Merge(other.fTargetByCategory, predictor);
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

FSEffect FSCatPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfGroups({fTargetByCategory, fTargetMean, fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

void FSCatPContTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPContTAccum", fState);
  FSDisplay::Value(out, "Target mean", fTargetMean);
  FSDisplay::Counts(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Groups(out, "Target by predictor category", fTargetByCategory);
}
