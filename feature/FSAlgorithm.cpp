#include "feature/FSAlgorithm.h"

#include <ostream>

#include "feature/FSSettings.h"

using MCFeature::MCStatus;
using MCFSCommon::RankCriteria;

FSAlgorithm::FSAlgorithm(FSSettings* settings)
    : fpSettings(settings),
      fCancel(settings->GetCancelPointer()),
      fPredictors(settings, &fCancel) {}

FSAlgorithm::FSAlgorithm(std::unique_ptr<FSSettings> settings) : FSAlgorithm(settings.get()) {
  fpOwnSettings = std::move(settings);
}

FSAlgorithm::~FSAlgorithm() = default;

std::string FSAlgorithm::GetComponentVersion() const {
  return "Feature Selection Component Ver.1.0, by the PredSelect contributors";
}

// Runs a stage unless the component is in error; a cancel seen before or during it empties the
// component.
template <class Stage>
MCStatus FSAlgorithm::Run(Stage stage) {
  if (fStatus.IsError()) return fStatus;
  if (!fCancel.IsCancel()) {
    fStatus = stage();
    fPredictors.SetWarning(fStatus.IsWarning() ? fStatus.GetErrorCode() : 0);
  }
  if (fCancel.IsCancel()) {
    fPredictors.Cancel();
    fStatus = MCFeature::Error(MCFeature::kCancelled);
  }
  return fStatus;
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

MCStatus FSAlgorithm::ScreenAndRank(bool screen, int nBest) {
  MCStatus status = CheckPredAllMissConst();
  if (status.IsOK() && screen) status = ScreenPredictors();
  return status.IsOK() ? SortAndRank(nBest) : status;
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
  return Run([&] {
    fpSettings->SetTargetPosition(-1);
    const MCStatus pass = fPredictors.PassRecordsNoTarget(source, maxRecords);
    fbDataAccumulated = true;
    const MCStatus screening = fPredictors.ScreenAllReasons(indices, reasons);
    return pass.IsOK() ? screening : pass;
  });
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
  MCStatus status = fPredictors.GetTopPredictors(criterion, n, indices, values);
  if (status.IsOK() && n >= 1 && n > fPredictors.GetNValidPred()) {
    status = MCFeature::Warning(MCFeature::kTooFewPredictors);
    status.SetDiscreteDatum(0, fPredictors.GetNValidPred());
  }
  return status;
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
  return fPredictors.GetPredictorStats(criterion, predictor, value, out2, out3, out4);
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
  out << GetComponentVersion() << "\nStatus: code " << fStatus.GetErrorCode() << ", severity "
      << fStatus.GetSeverity() << '\n';
  fpSettings->Display(out);
  fPredictors.Display(out);
}
