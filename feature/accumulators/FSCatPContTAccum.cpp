#include "feature/accumulators/FSCatPContTAccum.h"

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSCategorySort.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"

namespace {

// Fewer cases cost less without an order.
constexpr std::size_t kWorthSorting = 512;

}  // namespace

void FSCatPContTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  fSums.Add(FSCategory(predictor), target, weight);
  fState.AddValid(FSCategory(predictor), weight);
}

void FSCatPContTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSCatPContTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  if (cases.fbSmallWeights && cases.fbOrdinaryTargets && FitFirst(predictor, cases)) {
    const std::size_t missing = cases.fNCases >= kWorthSorting ? AddSorted(predictor, cases)
                                                               : AddOneByOne(predictor, cases);
    FSCountBlock<FSCategories>(predictor, cases, missing, fState);
  } else {
    FSWalkBlock<FSCategories>(predictor, cases, fState, [&](std::size_t i, double x, double w) {
      fSums.Add(FSCategory(x), cases.fpTargets[i], w);
    });
  }
}

bool FSCatPContTAccum::FitFirst(const double* predictor, const FSCaseBlock& cases) {
  fSums.FitFirst(cases.fNCases, [&](std::size_t i) {
    return FSIsValidCategory(predictor[i]) ? cases.fpTargets[i] : 0.0;
  });
  return fSums.IsOrdinary();
}

// The cases of each category in turn. Returns how many are missing.
std::size_t FSCatPContTAccum::AddSorted(const double* predictor, const FSCaseBlock& cases) {
  FSCategorySort& sort = *cases.fpSort;
  sort.Sort(predictor, cases.fNCases);
  for (const FSCategoryRun& run : sort.Runs()) {
    fSums.AddRun(run.fCategory, run.fEnd - run.fBegin,
                 {cases.fpTargets, cases.RunWeights(), sort.Order() + run.fBegin});
  }
  std::size_t missing = 0;
  for (const FSPlace i : sort.Others()) missing += AddOther(i, predictor[i], cases);
  return missing;
}

std::size_t FSCatPContTAccum::AddOneByOne(const double* predictor, const FSCaseBlock& cases) {
  std::size_t missing = 0;
  for (std::size_t i = 0; i < cases.fNCases; ++i) {
    const double value = predictor[i];
    if (value > -1.0 && value < kFSSmallCategories) [[likely]] {
      fSums.AddOrdinary(static_cast<int>(value), cases.fpTargets[i], cases.fpWeights[i]);
    } else {
      missing += AddOther(i, value, cases);
    }
  }
  return missing;
}

std::size_t FSCatPContTAccum::AddOther(std::size_t i, double value, const FSCaseBlock& cases) {
  if (!FSIsValidCategory(value)) return 1;
  fSums.Add(FSCategory(value), cases.fpTargets[i], cases.fpWeights[i]);
  return 0;
}

void FSCatPContTAccum::EndPass() {
  fSums.Settle();
  fTargetMean = fSums.GetMoments().Together().fMean.fValue;
  fPredictorCounts.Clear();
  for (const auto& [category, group] : fSums.GetMoments()) {
    fPredictorCounts.IncrementByFreq(category, group.fWeight);
  }
}

void FSCatPContTAccum::ComputeVariances() {
  EndPass();
  fSums.ComputeVariances();
}

void FSCatPContTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode& predictor,
                             const FSRecode&) {
  const auto& other = static_cast<const FSCatPContTAccum&>(accumulator);
  fState.Merge(other.fState, FSFirstCategory(other.fState, predictor));
  fSums.Merge(other.fSums, predictor);
  EndPass();
}

std::size_t FSCatPContTAccum::CheckAllReasons(const FSSettings* settings,
                                              std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckCategorical(*settings, fState, fPredictorCounts, false, reasons);
  return reasons.size();
}

FSScores FSCatPContTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fCatCont,
                    FSGroupedValues{fSums.GetMoments(), fState.GetValidWeight()}, wanted);
}

MCCommon::LeakTraits FSCatPContTAccum::GetLeakTraits() const {
  return FSLeaks::OfTargetByCategory(fSums.GetMoments(), fState.GetCaseWeight());
}

FSEffect FSCatPContTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfGroups({fSums.GetMoments(), fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

FSProfile FSCatPContTAccum::GetProfile() const {
  FSProfile profile;
  profile.fMissing = fState.GetMissingWeight();
  profile.fGroups = fSums.Groups();
  return profile;
}

void FSCatPContTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSCatPContTAccum", fState);
  FSDisplay::Value(out, "Target mean", fSums.GetScale().Back(fTargetMean));
  FSDisplay::Entries(out, "Predictor categories", fPredictorCounts);
  FSDisplay::Entries(out, "Target by predictor category", fSums.GetMoments());
}
