#include "feature/accumulators/FSContPCatTAccum.h"

#include <cmath>

#include "feature/FSCriterion.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/accumulators/FSScreening.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSEffects.h"
#include "feature/statistics/FSLeaks.h"

void FSContPCatTAccum::AddCase(double predictor, double target, double weight, bool) {
  if (!(weight > 0.0)) return;
  fSums.Add(FSCategory(target), predictor, weight);
  fState.AddValid(predictor, weight);
}

void FSContPCatTAccum::AddMissing(double weight) {
  if (weight > 0.0) fState.AddMissing(weight);
}

void FSContPCatTAccum::AddBlock(const double* predictor, const FSCaseBlock& cases) {
  if (cases.fbSmallWeights) {
    AddShared(predictor, cases);
  } else {
    FSWalkBlock<FSNumbers>(predictor, cases, fState, [&](std::size_t i, double x, double w) {
      fSums.Add(cases.fpTargetCategories[i], x, w);
    });
  }
}

// The cases of each target category in turn.
void FSContPCatTAccum::AddShared(const double* predictor, const FSCaseBlock& cases) {
  fSums.FitFirst(cases.fNCases,
                 [=](std::size_t i) { return FSIsValidNumber(predictor[i]) ? predictor[i] : 0.0; });
  std::size_t missing = 0;
  for (const FSCategoryRun& run : cases.fRuns) {
    missing += fSums.AddRun(run.fCategory, run.fEnd - run.fBegin,
                            {predictor, cases.RunWeights(), cases.fpOrder + run.fBegin});
  }
  for (const FSPlace i : cases.fOthers) {
    if (FSIsValidNumber(predictor[i])) {
      fSums.Add(cases.fpTargetCategories[i], predictor[i], cases.fpWeights[i]);
    } else {
      ++missing;
    }
  }
  FSCountBlock<FSNumbers>(predictor, cases, missing, fState);
}

void FSContPCatTAccum::EndPass() {
  fSums.Settle();
  fMean = fSums.GetMoments().Together().fMean.fValue;
}

void FSContPCatTAccum::ComputeVariances() {
  EndPass();
  fSums.ComputeVariances();
}

void FSContPCatTAccum::Merge(const IFSPredTargetAccum& accumulator, const FSRecode&,
                             const FSRecode& target) {
  const auto& other = static_cast<const FSContPCatTAccum&>(accumulator);
  fSums.Merge(other.fSums, target);
  fState.Merge(other.fState, other.fState.GetFirst());
  EndPass();
}

double FSContPCatTAccum::OverallStddev() const {
  return fSums.GetScale().Back(std::sqrt(fSums.GetMoments().Together().fVariance));
}

std::size_t FSContPCatTAccum::CheckAllReasons(const FSSettings* settings,
                                              std::vector<int>& reasons) const {
  reasons.clear();
  FSScreening::CheckContinuous(*settings, fState, fSums.GetScale().Back(fMean), OverallStddev(),
                               reasons);
  return reasons.size();
}

FSScores FSContPCatTAccum::ComputeScores(const MCFSCommon::CriteriaSet& wanted) const {
  return FSScoresBy(&FSCriterion::fContCat,
                    FSGroupedValues{fSums.GetMoments(), fState.GetValidWeight()}, wanted);
}

MCCommon::LeakTraits FSContPCatTAccum::GetLeakTraits() const {
  const double stddev = OverallStddev();
  return FSLeaks::OfPredictorByTarget(fSums.GetMoments(), fState.GetCaseWeight(), stddev * stddev);
}

FSEffect FSContPCatTAccum::ComputeEffect(MCFSCommon::RankCriteria) const {
  FSEffect effect = FSEffects::OfGroups({fSums.GetMoments(), fState.GetValidWeight()});
  effect.fPercentMissing = fState.GetPercentMissing();
  return effect;
}

FSProfile FSContPCatTAccum::GetProfile() const {
  FSProfile profile;
  profile.fMissing = fState.GetMissingWeight();
  profile.fGroups = fSums.Groups();
  return profile;
}

void FSContPCatTAccum::Display(std::ostream& out) const {
  FSDisplay::State(out, "FSContPCatTAccum", fState);
  FSDisplay::Value(out, "Mean", fSums.GetScale().Back(fMean));
  FSDisplay::Entries(out, "Predictor by target category", fSums.GetMoments());
}
