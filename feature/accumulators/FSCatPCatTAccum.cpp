#include "feature/accumulators/FSCatPCatTAccum.h"

#include <vector>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"
#include "feature/statistics/FSStatistics.h"

inline void FSCatPCatTAccum::Count(int predictor, int target, double weight) {
  fPredictorCounts.IncrementByFreq(predictor, weight);
  fTargetCounts.IncrementByFreq(target, weight);
  fJointCounts.IncrementByFreq({predictor, target}, weight);
}

inline void FSCatPCatTAccum::Add(FSPredictorState& state, int predictor, int target,
                                 double weight) {
  Count(predictor, target, weight);
  state.AddValid(predictor, weight);
}

void FSCatPCatTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (weight > 0.0) Add(fState, FSCategory(predictor), FSCategory(target), weight);
}

void FSCatPCatTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPCatTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  std::size_t first = 0;
  if (cases.fbWholeWeights && cases.fTargetSide > 0) {
    const int rows = FSSmallRows(predictor, cases.fNCases);
    const auto cells = static_cast<std::size_t>(rows * cases.fTargetSide);
    if (cells <= 2 * cases.fNCases) first = AddBlockAsTable(predictor, cases, rows);
  }
  FSWalkBlock<FSCategories>(predictor, cases, first, fState,
                            [&](FSPredictorState& state, std::size_t i, double x, double w) {
                              Add(state, FSCategory(x), cases.fpTargetCategories[i], w);
                            });
}

// Counts the cases up to the first whose predictor category is not small in a table of their own;
// returns that case. Sums of whole weights are exact, so that it does not matter when they are
// added.
std::size_t FSCatPCatTAccum::AddBlockAsTable(const double* predictor, const FSCaseBlock& cases,
                                             int rows) {
  const int side = cases.fTargetSide;
  std::vector<double> table(static_cast<std::size_t>(rows * side));
  const std::size_t end = FSWalkBlock<FSSmallCategories>(
      predictor, cases, 0, fState, [&](FSPredictorState& state, std::size_t i, double x, double w) {
        const int category = static_cast<int>(x);
        table[static_cast<std::size_t>(category * side + cases.fpTargetCategories[i])] += w;
        state.AddValid(category, w);
      });
  for (int k = 0; k < rows * side; ++k) {
    const double weight = table[static_cast<std::size_t>(k)];
    if (weight > 0.0) Count(k / side, k % side, weight);
  }
  return end;
}

void FSCatPCatTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                            const FSRecode& target) {
  const auto& other = static_cast<const FSCatPCatTAccum&>(accumulator);
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fPredictorCounts.Merge(other.fPredictorCounts, predictor);
  fTargetCounts.Merge(other.fTargetCounts, target);
  fJointCounts.Merge(other.fJointCounts, predictor, target);
}

std::size_t FSCatPCatTAccum::CheckAllReasons(const FSSettings* settings,
                                             std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fPredictorCounts, true, reasons);
  return reasons.size();
}

FSStatistics::ContingencyTable FSCatPCatTAccum::Counts() const {
  return {fPredictorCounts, fTargetCounts, fJointCounts, fState.GetValidWeight()};
}

FSScores FSCatPCatTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fCatCat, Counts(), wanted);
}

FSEffect FSCatPCatTAccum::ComputeEffect(MCFSCommon::RankCriteria ranking) const {
  FSEffect effect = FSEffects::OfTable(Counts(), ranking);
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

MCCommon::LeakTraits FSCatPCatTAccum::GetLeakTraits() const {
  return FSLeaks::OfPairs(fTargetCounts, fJointCounts, fState.GetCaseWeight());
}

void FSCatPCatTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPCatTAccum", fState);
  FSDisplay::Entries(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Entries(out, "Target categories", fTargetCounts);
  FSDisplay::Entries(out, "Pairs of predictor and target category", fJointCounts);
}
