#include "feature/FSAlgorithm.h"

#include <ostream>

#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"

using MCFeature::MCStatus;
using MCFSCommon::RankCriteria;

FSAlgorithm::FSAlgorithm(FSSettings* settings)
    : fpSettings(settings),
      fCancel(settings->GetCancelPointer()),
      fPredictors(settings, &fCancel),
      fpLink(std::make_shared<FSAlgorithm*>(this)) {}

FSAlgorithm::FSAlgorithm(std::unique_ptr<FSSettings> settings) : FSAlgorithm(settings.get()) {
  fpOwnSettings = std::move(settings);
}

FSAlgorithm::~FSAlgorithm() = default;

std::string FSAlgorithm::GetComponentVersion() const {
  std::string version;
  static_cast<void>(FSWithinMemory([&version] {
    version = "Feature Selection Component Ver.1.0, by the PredSelect contributors";
    return MCStatus();
  }));
  return version;
}

// Runs a stage unless the component is in error; a cancel seen before or during it, or want of
// memory, empties the component.
template <class Stage>
MCStatus FSAlgorithm::Run(Stage stage) {
  if (fStatus.IsError()) return fStatus;
  if (!fCancel.IsCancel()) {
    fbInStage = true;
    fStatus = FSWithinMemory(stage);
    fbInStage = false;
    fPredictors.SetWarning(fStatus.IsWarning() ? fStatus.GetErrorCode() : 0);
  }
  if (fStatus.GetErrorCode() == MCFeature::kOutOfMemory) Abandon(MCFeature::kOutOfMemory);
  if (fCancel.IsCancel()) Abandon(MCFeature::kCancelled);
  return fStatus;
}

void FSAlgorithm::Abandon(MCFeature::StatusCode code) {
  fPredictors.Cancel();
  fStatus = MCFeature::Error(code);
}

void FSAlgorithm::Stop() {
  Cancel();
  if (!fbInStage && !fStatus.IsError()) Abandon(MCFeature::kCancelled);
}

MCStatus FSAlgorithm::Accumulate(MCCommon::RecordIterator& source, int maxRecords) {
  return Run([&] {
    const MCStatus status = fpSettings->GetFlagTrInput()
                                ? fPredictors.PassTransactions(source)
                                : fPredictors.PassRecords(source, maxRecords);
    fbDataAccumulated = true;
    return status;
  });
}

MCStatus FSAlgorithm::CheckPredAllMissConst() {
  return Run([&] { return fPredictors.CheckPredAllMissConst(); });
}

MCStatus FSAlgorithm::ScreenPredictors() {
  return Run([&] { return fPredictors.ScreenPredictors(); });
}

MCStatus FSAlgorithm::SortAndRank(int nBest) {
  return Run([&] {
    fPredictors.ComputeCriteria();
    if (nBest > 0) {
      fPredictors.SortBest(nBest);
      fPredictors.RankBest();
    } else {
      fPredictors.SortAll();
      fPredictors.RankAll();
    }
    fbPredictorsRanked = true;
    if (!fStatus.IsOK() || nBest <= fPredictors.GetNValidPred()) return fStatus;
    MCStatus status = MCFeature::Error(MCFeature::kTooFewPredictors);
    status.SetDiscreteDatum(0, fPredictors.GetNValidPred());
    return status;
  });
}

MCStatus FSAlgorithm::AccumulateAndRank(MCCommon::RecordIterator& source, int maxRecords,
                                        bool screen, int nBest) {
  const MCStatus status = Accumulate(source, maxRecords);
  return status.IsOK() ? ScreenAndRank(screen, nBest) : status;
}

MCStatus FSAlgorithm::CheckPredictorsNoTarget(MCCommon::RecordIterator& source,
                                              std::vector<int>& indices,
                                              std::vector<std::vector<int>>& reasons,
                                              int maxRecords) {
  indices.clear();
  reasons.clear();
  const MCStatus status = Run([&] {
    fpSettings->SetTargetPosition(-1);
    const MCStatus pass = fPredictors.PassRecordsNoTarget(source, maxRecords);
    fbDataAccumulated = true;
    const MCStatus screening = fPredictors.ScreenAllReasons(indices, reasons);
    return pass.IsOK() ? screening : pass;
  });
  if (status.GetErrorCode() == MCFeature::kOutOfMemory) {
    indices.clear();
    reasons.clear();
  }
  return status;
}

MCStatus FSAlgorithm::ScreenWithoutTarget(std::vector<int>& indices,
                                          std::vector<std::vector<int>>& reasons) {
  indices.clear();
  reasons.clear();
  return Run([&] { return fPredictors.ScreenAllReasons(indices, reasons); });
}

MCStatus FSAlgorithm::ScreenAndRank(bool screen, int nBest) {
  MCStatus status = CheckPredAllMissConst();
  if (status.IsOK() && screen) status = ScreenPredictors();
  return status.IsOK() ? SortAndRank(nBest) : status;
}

// The component's status; error 1 when it was cancelled.
MCStatus FSAlgorithm::StatusNow() const {
  if (fStatus.IsError() || !fCancel.IsCancel()) return fStatus;
  return MCFeature::Error(MCFeature::kCancelled);
}

// What cannot be merged leaves the component as it was, so its status is not stored. A part of the
// data in which every case was excluded ends in an error and still counts, on either side.
MCStatus FSAlgorithm::Merge(const IFSAlgorithm& component, const FSCategoryMaps* maps) {
  const MCStatus before = fStatus;
  if (HasWholePass() && !fCancel.IsCancel()) fStatus = {};
  MCStatus refusal;
  const MCStatus status = Run([&] {
    const auto* other = dynamic_cast<const FSAlgorithm*>(&component);
    MCStatus merged = MCFeature::CannotMerge(MCFeature::kStage);
    if (other == this) {
      merged = MCFeature::CannotMerge(MCFeature::kOwnSelf);
    } else if (other == nullptr) {
      merged = MCFeature::CannotMerge(MCFeature::kOtherKind);
    } else if (other->HasWholePass()) {
      merged = fPredictors.Merge(other->fPredictors, maps);
    }
    if (merged.GetErrorCode() == MCFeature::kCannotMerge) {
      refusal = merged;
      return before;
    }
    fbDataAccumulated = true;
    return merged;
  });
  return refusal.IsOK() ? status : refusal;
}

// Whether no error has cut the data pass short.
bool FSAlgorithm::HasWholePass() const {
  const std::int64_t code = fStatus.GetErrorCode();
  return !fStatus.IsError() || code == MCFeature::kAllCasesExcluded ||
         code == MCFeature::kNoValidWeight;
}

MCStatus FSAlgorithm::GetTopPredictors(RankCriteria criterion, std::vector<int>& indices,
                                       std::vector<double>& values, int n) const {
  indices.clear();
  values.clear();
  if (StatusNow().GetErrorCode() == MCFeature::kCancelled) return StatusNow();
  if (!fbPredictorsRanked) return MCFeature::Error(MCFeature::kNotRanked);
  MCStatus status =
      FSWithinMemory([&] { return fPredictors.GetTopPredictors(criterion, n, indices, values); });
  if (status.GetErrorCode() == MCFeature::kOutOfMemory) {
    indices.clear();
    values.clear();
  }
  if (status.IsOK() && n >= 1 && n > fPredictors.GetNValidPred()) {
    status = MCFeature::Warning(MCFeature::kTooFewPredictors);
    status.SetDiscreteDatum(0, fPredictors.GetNValidPred());
  }
  return status;
}

// What saving ends with: nothing of a component in error is kept, but what a whole pass has counted
// even if it left no case.
MCStatus FSAlgorithm::SavingStatus() const {
  const MCStatus status = StatusNow();
  const bool isWhole = HasWholePass() && status.GetErrorCode() != MCFeature::kCancelled;
  return status.IsError() && isWhole ? MCStatus() : status;
}

void FSAlgorithm::GetNValidNExcluded(double& validWeight, double& excludedWeight, int& validCases,
                                     int& excludedCases) const {
  fPredictors.GetNValidNExcluded(validWeight, excludedWeight, validCases, excludedCases);
}

int FSAlgorithm::GetTargetCategoryCount(int position) const {
  return fPredictors.GetTargetCategoryCount(position);
}

bool FSAlgorithm::GetTargetCategoryInfo(int position, int& category,
                                        std::pair<int, double>& counts) const {
  return fPredictors.GetTargetCategoryInfo(position, category, counts);
}

const std::vector<int>& FSAlgorithm::GetIndicesDelPred() const {
  return fPredictors.GetIndicesDelPred();
}

const std::vector<int>& FSAlgorithm::GetReasonsDelPred() const {
  return fPredictors.GetReasonsDelPred();
}

bool FSAlgorithm::GetPredictorStats(int criterion, int predictor, double& value, double& out2,
                                    double& out3, double& out4) const {
  bool isShown = false;
  const MCStatus status = FSWithinMemory([&] {
    isShown = fPredictors.GetPredictorStats(criterion, predictor, value, out2, out3, out4);
    return MCStatus();
  });
  return isShown && status.IsOK();
}

void FSAlgorithm::SetProgressListener(ProgressListener* listener) {
  fpSettings->SetProgressListener(listener);
}

void FSAlgorithm::SetCancelPtr(MCQueryCancel* cancel) {
  fpSettings->SetCancelPointer(cancel);
  fCancel.SetCancelPtr(cancel);
}

const std::vector<int>& FSAlgorithm::GetRanks(RankCriteria criterion) const {
  return fPredictors.GetRanks(criterion);
}

const std::vector<double>& FSAlgorithm::GetCriterionValues(RankCriteria criterion) const {
  return fPredictors.GetCriterionValues(criterion);
}

void FSAlgorithm::Display(std::ostream& out) const {
  static_cast<void>(FSWithinMemory(out, [&] {
    out << GetComponentVersion() << "\nStatus: code " << fStatus.GetErrorCode() << ", severity "
        << fStatus.GetSeverity() << '\n';
    fpSettings->Display(out);
    fPredictors.Display(out);
    return MCStatus();
  }));
}
