#include "feature/FSPredictorSet.h"

#include <algorithm>
#include <ostream>

#include "common/MissingValue.h"
#include "common/Progress.h"
#include "feature/FSCriterion.h"
#include "feature/FSReporter.h"
#include "feature/FSSettings.h"
#include "feature/FSStopwatch.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/pass/FSMergeCheck.h"
#include "feature/pass/FSRecordPass.h"
#include "feature/pass/FSTransactionPass.h"

using namespace MCFSCommon;
using MCFeature::MCStatus;

namespace {

// The reason of the first stage, 0 for none.
int AllMissingOrConstant(const IFSPredTargetAccum& accumulator) {
  if (accumulator.IsAllMissing()) return kAllMissing;
  return accumulator.IsAllConstant() ? kAllConstant : kNotDeleted;
}

}  // namespace

FSPredictorSet::FSPredictorSet(FSSettings* settings, FSCancelInfo* cancel)
    : fpSettings(settings),
      fpCancel(cancel),
      fNPredictors(settings->GetNPredictors()),
      fSetType(settings->GetTypeAllPredictors()),
      fCounts(settings),
      fRanking(settings, cancel) {}

MCStatus FSPredictorSet::PassRecords(MCCommon::RecordIterator& source, int maxRecords) {
  return PassBlocks(source, maxRecords, fpSettings->GetTargetPosition() >= 0, false);
}

MCStatus FSPredictorSet::PassRecordsNoTarget(MCCommon::RecordIterator& source, int maxRecords) {
  return PassBlocks(source, maxRecords, false, true);
}

MCStatus FSPredictorSet::PassBlocks(MCCommon::RecordIterator& source, int maxRecords,
                                    bool withTarget, bool warn) {
  const FSStopwatch watch(fElapsed);
  fCounts.Start(fNPredictors, withTarget);
  FSRecordPass(fCounts, *fpSettings, withTarget, WorkersOfPass())
      .Run(source, maxRecords, *fpCancel, watch);
  return EndOfPass(fpSettings->GetWeightPosition() >= 0, warn);
}

MCCommon::Workers& FSPredictorSet::WorkersOfPass() {
  const int threads = fpSettings->GetNThreads();
  if (!fpWorkers || fpWorkers->Count() != static_cast<std::size_t>(threads)) {
    fpWorkers = std::make_unique<MCCommon::Workers>(threads);
  }
  return *fpWorkers;
}

MCStatus FSPredictorSet::PassTransactions(MCCommon::RecordIterator& source) {
  const FSStopwatch watch(fElapsed);
  fCounts.Start(fNPredictors, true);
  const MCStatus status =
      FSTransactionPass(fCounts, fpSettings->IsCatTarget()).Run(source, *fpCancel);
  const MCStatus verdict = EndOfPass(false, false);
  return status.IsError() ? status : verdict;
}

MCStatus FSPredictorSet::EndOfPass(bool weighted, bool warn) {
  fStatus = kAccumulated;
  fCounts.EndPass();
  return fCounts.Verdict(weighted, warn);
}

MCStatus FSPredictorSet::Merge(const FSPredictorSet& other, const FSCategoryMaps* maps) {
  MCFeature::MergeObstacle obstacle{};
  int predictor = 0;
  if (fStatus > kAccumulated || other.fStatus != kAccumulated) {
    return MCFeature::CannotMerge(MCFeature::kStage);
  }
  if (fpSettings->FindDifference(*other.fpSettings, obstacle, predictor)) {
    return MCFeature::CannotMerge(obstacle, predictor);
  }
  if (fNPredictors != other.fNPredictors) return MCFeature::CannotMerge(MCFeature::kNPredictors);
  if (other.fCounts.Size() != static_cast<std::size_t>(fNPredictors)) {
    return MCFeature::CannotMerge(MCFeature::kStage);
  }
  const MCStatus status = FSMergeCheck::Check(fCounts, other.fCounts, maps);
  if (!status.IsOK()) return status;
  fCounts.Merge(other.fCounts, maps);
  fElapsed += other.fElapsed;
  return EndOfPass(!fpSettings->GetFlagTrInput() && fpSettings->GetWeightPosition() >= 0, false);
}

void FSPredictorSet::CompletePass() {
  const FSStopwatch watch(fElapsed);
  fCounts.Complete();
}

// Deletes every predictor for which reason(accumulator) is not 0, until cancelled.
template <class Reason>
void FSPredictorSet::RemoveWhere(Reason reason) {
  CompletePass();
  const FSStopwatch watch(fElapsed);
  std::vector<std::pair<int, int>> found;
  for (std::size_t j = 0; j < fCounts.Size() && !fpCancel->IsCancel(); ++j) {
    const IFSPredTargetAccum* accumulator = fCounts.At(j);
    const int why = accumulator != nullptr ? reason(*accumulator) : kNotDeleted;
    if (why == kNotDeleted) continue;
    fCounts.Remove(j);
    found.emplace_back(static_cast<int>(j), why);
  }
  fExclusions.Add(found);
  fStatus = kScreened;
}

MCStatus FSPredictorSet::CheckPredAllMissConst() {
  RemoveWhere(AllMissingOrConstant);
  return GetNValidPred() == 0 ? MCFeature::Warning(MCFeature::kAllMissingOrConstant) : MCStatus();
}

MCStatus FSPredictorSet::ScreenPredictors() {
  RemoveWhere([this](const IFSPredTargetAccum& accumulator) {
    return accumulator.CheckDelete(fpSettings);
  });
  return GetNValidPred() == 0 ? MCFeature::Warning(MCFeature::kAllScreenedOut) : MCStatus();
}

MCStatus FSPredictorSet::ScreenAllReasons(std::vector<int>& indices,
                                          std::vector<std::vector<int>>& reasons) {
  CompletePass();
  const FSStopwatch watch(fElapsed);
  for (std::size_t j = 0; j < fCounts.Size() && !fpCancel->IsCancel(); ++j) {
    const IFSPredTargetAccum* accumulator = fCounts.At(j);
    if (accumulator == nullptr) continue;
    std::vector<int> found;
    accumulator->CheckAllReasons(fpSettings, found);
    if (const int first = AllMissingOrConstant(*accumulator); first != kNotDeleted) {
      found.insert(found.begin(), first);
    }
    if (found.empty()) continue;
    indices.push_back(static_cast<int>(j));
    reasons.push_back(std::move(found));
  }
  fStatus = kScreened;
  const bool none = static_cast<int>(indices.size()) == GetNValidPred();
  return none ? MCFeature::Warning(MCFeature::kAllScreenedOut) : MCStatus();
}

void FSPredictorSet::ComputeCriteria() {
  CompletePass();
  const FSStopwatch watch(fElapsed);
  ProgressListener* listener = fpSettings->GetProgressListener();
  const std::int64_t interval = std::int64_t{fpSettings->GetNSkippedPredictorReports()} + 1;
  fRanking.Start(fNPredictors);
  for (int j = 0; j < fNPredictors && !fpCancel->IsCancel(); ++j) {
    if (IsThere(j)) fRanking.Enter(j, fCounts);
    if (listener != nullptr && (j + 1) % interval == 0) {
      FSReporter reporter;
      reporter.SetNPredictors(j + 1, watch.Seconds());
      listener->Report(reporter);
    }
  }
  fStatus = kCriteriaComputed;
}

bool FSPredictorSet::IsThere(int predictor) const {
  return predictor >= 0 && predictor < static_cast<int>(fCounts.Size()) &&
         fCounts.At(static_cast<std::size_t>(predictor)) != nullptr;
}

void FSPredictorSet::SortAll() {
  const FSStopwatch watch(fElapsed);
  fRanking.SortAll();
  fStatus = kSortedAll;
}

void FSPredictorSet::SortBest(int n) {
  const FSStopwatch watch(fElapsed);
  fRanking.SortBest(n < 1 ? GetNValidPred() : n);
  fStatus = kSortedBest;
}

void FSPredictorSet::RankAll() {
  fRanking.RankFirst(fNPredictors);
  fStatus = kRanked;
}

void FSPredictorSet::RankBest() {
  fRanking.RankFirst(fRanking.GetNBest());
  fStatus = kRanked;
}

MCStatus FSPredictorSet::GetTopPredictors(RankCriteria criterion, int n, std::vector<int>& indices,
                                          std::vector<double>& values) const {
  indices.clear();
  values.clear();
  if (!fpSettings->GetCriterion(criterion)) return MCFeature::Error(MCFeature::kNotComputed);
  const int nBest = fRanking.GetNBest();
  int count = n <= 0 ? nBest : n;
  if (nBest > 0) count = std::min(count, nBest);
  if (count <= 0 || count > GetNValidPred()) count = GetNValidPred();
  for (const FSPredSort& sort : fRanking.OrderOf(criterion, fSetType)) {
    if (static_cast<int>(indices.size()) == count) break;
    indices.push_back(sort.fIndex);
    values.push_back(sort.fValue);
  }
  return {};
}

bool FSPredictorSet::GetPredictorStats(int criterion, int predictor, double& value, double& out2,
                                       double& out3, double& out4) const {
  value = out2 = out3 = out4 = MCMV::gMissingValue;
  const FSCriterion* row = FSCriterion::Find(criterion);
  if (row == nullptr || !IsThere(predictor)) return false;
  const FSScore& score = fCounts.ScoreOf(static_cast<std::size_t>(predictor), row->fCode);
  if (!row->GetOutputs(score, value, out2, out3, out4)) return false;
  if (fpSettings->ArePValuesExact() && row->HasSignificance()) value = score.fTest.P();
  return true;
}

MCCommon::LeakTraits FSPredictorSet::GetLeakTraits(int predictor) const {
  if (!IsThere(predictor)) return {};
  return fCounts.At(static_cast<std::size_t>(predictor))->GetLeakTraits();
}

FSEffect FSPredictorSet::GetPredictorEffect(MCFSCommon::RankCriteria ranking, int predictor) const {
  return IsThere(predictor)
             ? fCounts.At(static_cast<std::size_t>(predictor))->ComputeEffect(ranking)
             : FSEffect();
}

FSProfile FSPredictorSet::GetPredictorProfile(int predictor) const {
  return IsThere(predictor) ? fCounts.At(static_cast<std::size_t>(predictor))->GetProfile()
                            : FSProfile();
}

const FSMapICnt* FSPredictorSet::GetCategories(int predictor) const {
  return IsThere(predictor) ? fCounts.At(static_cast<std::size_t>(predictor))->GetCategories()
                            : nullptr;
}

int FSPredictorSet::GetNTargetCategories() const {
  return static_cast<int>(fCounts.GetTargetCategories().Size());
}

int FSPredictorSet::GetTargetCategoryCount(int position) const {
  int category = 0;
  std::pair<int, double> counts(0, 0.0);
  GetTargetCategoryInfo(position, category, counts);
  return counts.first;
}

bool FSPredictorSet::GetTargetCategoryInfo(int position, int& category,
                                           std::pair<int, double>& counts) const {
  if (position < 0 || position >= GetNTargetCategories()) return false;
  const auto& entry = fCounts.GetTargetCategories()[static_cast<std::size_t>(position)];
  category = entry.first;
  counts = entry.second;
  return true;
}

std::string FSPredictorSet::GetScreenCritName(PredictorDelReason reason) {
  return GetDelReasonName(reason);
}

std::string FSPredictorSet::GetRankCritName(RankCriteria criterion) {
  return GetCriterionShortName(criterion);
}

void FSPredictorSet::Cancel() {
  fCounts.Clear();
  fRanking.Clear();
}

void FSPredictorSet::Display(std::ostream& out) const {
  double validWeight = 0.0, excludedWeight = 0.0;
  int validCases = 0, excludedCases = 0;
  GetNValidNExcluded(validWeight, excludedWeight, validCases, excludedCases);
  out << "Predictor set: " << fNPredictors << " predictors, " << GetSetTypeName(fSetType) << ", "
      << GetSetStatusName(fStatus) << '\n';
  FSDisplay::Value(out, "Valid weight", validWeight);
  FSDisplay::Value(out, "Excluded weight", excludedWeight);
  FSDisplay::Value(out, "Valid cases", validCases);
  FSDisplay::Value(out, "Excluded cases", excludedCases);
  FSDisplay::Value(out, "Elapsed seconds", fElapsed);
  FSDisplay::Entries(out, "Target categories", fCounts.GetTargetCategories());
  for (std::size_t k = 0; k < GetIndicesDelPred().size(); ++k) {
    out << "  Predictor " << GetIndicesDelPred()[k] << " deleted: reason " << GetReasonsDelPred()[k]
        << '\n';
  }
  for (std::size_t j = 0; j < fCounts.Size(); ++j) {
    if (fCounts.At(j) == nullptr) continue;
    out << "Predictor " << j << ": ";
    fCounts.At(j)->Display(out);
  }
  fRanking.Display(out);
}
