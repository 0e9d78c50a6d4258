// Criteria, sorting and ranking of FSPredictorSet.

#include <algorithm>

#include "common/MissingValue.h"
#include "common/Progress.h"
#include "feature/FSSettings.h"
#include "feature/ranking/FSPredictorSet.h"
#include "feature/ranking/FSReporter.h"
#include "feature/ranking/FSStopwatch.h"

using namespace MCFSCommon;
using MCFeature::MCStatus;

namespace {

std::size_t At(int index) { return static_cast<std::size_t>(index); }

RankCriteria Criterion(int index) { return static_cast<RankCriteria>(index); }

}  // namespace

void FSPredictorSet::ComputeCriteria() {
  CompletePass();
  const FSStopwatch watch(fElapsed);
  ProgressListener* listener = fpSettings->GetProgressListener();
  const std::int64_t interval = std::int64_t{fpSettings->GetNSkippedPredictorReports()} + 1;
  for (int c = 0; c < kNCriteria; ++c) {
    fSortVectors[At(c)].clear();
    const std::size_t n = fpSettings->GetCriterion(Criterion(c)) ? At(fNPredictors) : 0;
    fCriterionValues[At(c)].assign(n, MCMV::gMissingValue);
    fRanks[At(c)].assign(n, -1);
  }
  for (int j = 0; j < fNPredictors && !fpCancel->IsCancel(); ++j) {
    const IFSPredTargetAccum* accumulator =
        At(j) < fAccumulators.size() ? fAccumulators[At(j)].get() : nullptr;
    for (int c = 0; c < kNCriteria && accumulator != nullptr; ++c) {
      if (!fpSettings->GetCriterion(Criterion(c))) continue;
      FSPredSort& sort = fSortVectors[At(c)].emplace_back();
      double extra1 = 0.0, extra2 = 0.0;
      accumulator->ComputeCrit(c, sort.fValue, sort.fTie1, sort.fTie2, extra1, extra2);
      sort.fIndex = j;
      fCriterionValues[At(c)][At(j)] = sort.fValue;
    }
    if (listener != nullptr && (j + 1) % interval == 0) {
      FSReporter reporter;
      reporter.SetNPredictors(j + 1, watch.Seconds());
      listener->Report(reporter);
    }
  }
  fStatus = kCriteriaComputed;
}

void FSPredictorSet::SortAll() {
  const FSStopwatch watch(fElapsed);
  for (int c = 0; c < kNCriteria && !fpCancel->IsCancel(); ++c) {
    std::stable_sort(fSortVectors[At(c)].begin(), fSortVectors[At(c)].end(),
                     FSPredSort::ComparisonOf(Criterion(c)));
  }
  fStatus = kSortedAll;
}

void FSPredictorSet::SortBest(int n) {
  const FSStopwatch watch(fElapsed);
  if (n < 1) n = GetNValidPred();
  for (int c = 0; c < kNCriteria && !fpCancel->IsCancel(); ++c) {
    if (!fpSettings->GetCriterion(Criterion(c))) continue;
    std::vector<FSPredSort>& sorted = fSortVectors[At(c)];
    n = std::min(n, static_cast<int>(sorted.size()));
    std::partial_sort(sorted.begin(), sorted.begin() + n, sorted.end(),
                      FSPredSort::ComparisonOf(Criterion(c)));
  }
  fNBest = n;
  fStatus = kSortedBest;
}

void FSPredictorSet::RankAll() { RankFirst(fNPredictors); }

void FSPredictorSet::RankBest() { RankFirst(fNBest); }

void FSPredictorSet::RankFirst(int n) {
  for (int c = 0; c < kNCriteria && !fpCancel->IsCancel(); ++c) {
    const std::vector<FSPredSort>& sorted = fSortVectors[At(c)];
    const int count = std::min(n, static_cast<int>(sorted.size()));
    for (int p = 0; p < count; ++p) fRanks[At(c)][At(sorted[At(p)].fIndex)] = p;
  }
  fStatus = kRanked;
}

const std::vector<FSPredSort>& FSPredictorSet::SortVectorOf(RankCriteria criterion) const {
  const bool byF = criterion == kTStat && fSetType == kMixed;
  return fSortVectors[At(byF ? kFStat : criterion)];
}

MCStatus FSPredictorSet::GetTopPredictors(RankCriteria criterion, int n, std::vector<int>& indices,
                                          std::vector<double>& values) const {
  indices.clear();
  values.clear();
  if (!fpSettings->GetCriterion(criterion)) return MCFeature::Error(MCFeature::kNotComputed);
  int count = n == 0 ? fNBest : n;
  if (fNBest > 0) count = std::min(count, fNBest);
  if (count <= 0 || count > GetNValidPred()) count = GetNValidPred();
  for (const FSPredSort& sort : SortVectorOf(criterion)) {
    if (static_cast<int>(indices.size()) == count) break;
    indices.push_back(sort.fIndex);
    values.push_back(sort.fValue);
  }
  return {};
}

const std::vector<double>& FSPredictorSet::GetCriterionValues(RankCriteria criterion) const {
  static const std::vector<double> kNone;
  return At(criterion) < fCriterionValues.size() ? fCriterionValues[At(criterion)] : kNone;
}

const std::vector<int>& FSPredictorSet::GetRanks(RankCriteria criterion) const {
  static const std::vector<int> kNone;
  return At(criterion) < fRanks.size() ? fRanks[At(criterion)] : kNone;
}
