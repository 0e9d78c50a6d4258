#include "naivebayes/NBAlgorithm.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <numeric>
#include <ostream>

#include "naivebayes/NBReporter.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/store/NBCodeBlock.h"
#include "naivebayes/store/NBColumnView.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/variables/NBContVar.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::RecordBlock;
using MCCommon::RecordIterator;
using MCNaive::MCStatus;

namespace {

// Adds to a number of records, which stays at the highest one.
void AddRecords(std::int32_t& records, std::int32_t more) {
  records += std::min(more, std::numeric_limits<std::int32_t>::max() - records);
}

}  // namespace

// What one selection works on: the stored records, and their columns that are still in the model.
struct NBAlgorithm::Selection {
  std::unique_ptr<MultiPassRecordIter> fpStore;
  std::unique_ptr<MCNaive::NBColumnView> fpView;
  std::unique_ptr<NBAttributeSelector> fpSelector;
  int fNStored = 0;
  bool fbInMemory = false;
};

NBAlgorithm::NBAlgorithm(const NaiveBayesSettings& settings, const NBVarList& varList)
    : fSettings(settings), fVarList(varList), fCancel(settings.GetCancelPointer()) {
  fVarList.UpdateNumbersOfCategories();
  fOutput.Setup(fVarList.GetNOutputCats());
  fOutput.SetVariable(fVarList.GetVarAt(fVarList.GetTargetIndex()));
}

std::string NBAlgorithm::GetComponentVersion() const {
  return "Naive Bayes Component Ver. 1.0 of PredSelect";
}

MCStatus NBAlgorithm::Raise(const MCStatus& status) {
  if (!fStatus.IsError() && !status.IsOK()) fStatus = status;
  return fStatus;
}

void NBAlgorithm::DoCancel() {
  fbBuilt = false;
  static_cast<void>(Raise(MCNaive::Error(MCNaive::kCancelled)));
}

bool NBAlgorithm::MustStop() {
  if (fCancel.IsCancel()) DoCancel();
  return fStatus.IsError();
}

void NBAlgorithm::SetCancelPtr(MCQueryCancel* cancel) {
  fSettings.SetCancelPointer(cancel);
  fCancel.SetCancelPtr(cancel);
}

void NBAlgorithm::SetProgressListener(ProgressListener* listener) {
  fSettings.SetProgressListener(listener);
}

void NBAlgorithm::Prepare(bool usePossibleInputs, int nRecords) {
  if (fpPreparator && fpPreparator->UsesPossibleInputs() == usePossibleInputs) return;
  fpPreparator = std::make_unique<NBDataPreparator>(fVarList, usePossibleInputs, nRecords, fCancel);
  fInputs.clear();
  for (int j = 0; j < fpPreparator->GetInputSize(); ++j) {
    const int index = fpPreparator->GetInputColumn(j);
    fInputs.emplace_back(index, fVarList.GetVarAt(index), fOutput.GetNCategories());
  }
  fNInputs = fpPreparator->GetInputSize();
}

void NBAlgorithm::RestoreBins() {
  for (NBayesInput& input : fInputs) {
    auto* binned = dynamic_cast<NBContVar*>(input.GetVariable());
    if (binned != nullptr && binned->GetEncoder() != nullptr) {
      binned->SetupEncoder(std::vector<double>(binned->GetSetupCutpoints()));
    }
  }
  fpPreparator->UpdateNCats();
}

void NBAlgorithm::ResetAllCounts(bool totalsToo) {
  RestoreBins();
  fOutput.ResetCounts();
  for (NBayesInput& input : fInputs) input.ResetCounts();
  if (!totalsToo) return;
  fNRecords = 0;
  fTotalWeight = 0;
  fExcluded = {};
}

void NBAlgorithm::ReportProgress(int nRead) const {
  if (nRead % (std::int64_t{fSettings.GetNSkippedReports()} + 1) != 0) return;
  NBReporter report;
  report.SetValues(nRead, static_cast<double>(std::clock() - fPassStart) / 1e6);
  fSettings.GetProgressListener()->Report(report);
}

bool NBAlgorithm::CountBlock(const NBCodeBlock& codes, bool showProgress, int& nRead,
                             NBSum& weight) {
  showProgress = showProgress && fSettings.GetProgressListener() != nullptr;
  std::size_t cases = 0;
  for (; cases < codes.Cases() && !fCancel.IsCancel(); ++cases) {
    weight.Add(codes.Weights()[cases]);
    ++nRead;
    if (showProgress) ReportProgress(nRead);
  }
  fOutput.AddCases(codes.Targets(), codes.Weights(), cases);
  const bool weighted = fVarList.GetWeightIndex() >= 0;
  for (int j = 0; j < static_cast<int>(fInputs.size()); ++j) {
    if (weighted) {
      fInputs[j].AddCases(codes.Codes(j), codes.Targets(), codes.Weights(), cases);
    } else {
      fInputs[j].AddUnitCases(codes.Codes(j), codes.Targets(), cases);
    }
  }
  return cases == codes.Cases();
}

// The next records as codes; an adapter encodes straight into them.
bool NBAlgorithm::NextCodes(RecordIterator& records, NBCodeBlock& codes) const {
  if (auto* adapter = dynamic_cast<NBInternalAdapter*>(&records)) return adapter->NextCodes(codes);
  const RecordBlock& block = records.NextBlock(RecordBlock::kMaxCases);
  codes.Load(block, fVarList.GetWeightIndex() >= 0, NBCodeBlock::kCountingOffset);
  return block.Cases() > 0;
}

MCStatus NBAlgorithm::CountData(RecordIterator& records, bool showProgress) {
  fPassStart = std::clock();
  int nRead = 0;
  NBSum weight;
  NBCodeBlock codes;
  while (!fCancel.IsCancel()) {
    if (!NextCodes(records, codes) || !CountBlock(codes, showProgress, nRead, weight)) break;
  }
  if (fCancel.IsCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (records.GetFailReason() == RecordIterator::kReadError) {
    return MCNaive::Error(MCNaive::kTemporaryFile);
  }
  if (nRead == 0) return MCNaive::Error(MCNaive::kNoRecordsFound);
  AddRecords(fNRecords, nRead);
  if (fNRecords < 2) return MCNaive::Error(MCNaive::kTooFewRecords);
  fTotalWeight += weight.Total();
  FinishCounts();
  return {};
}

void NBAlgorithm::FinishCounts() {
  fOutput.ComputeProbabilities(fTotalWeight);
  fvKeptInputs.resize(fInputs.size());
  std::iota(fvKeptInputs.begin(), fvKeptInputs.end(), 0);
  // From the last to the first, so that the positions not yet visited stay valid.
  for (int j = static_cast<int>(fInputs.size()) - 1; j >= 0; --j) {
    if (fInputs[j].ComputeProbabilities(fTotalWeight) >= 2) continue;
    const int index = fInputs[j].GetVarIndex();
    if (fVarList.GetVariableRole(index) == INBVariable::kInput) {
      MCStatus dropped = MCNaive::Warning(MCNaive::kPredictorDropped);
      dropped.SetDiscreteDatum(0, index);
      static_cast<void>(Raise(dropped));
    }
    fVarList.SetVariableRole(index, INBVariable::kUnused);
    fpPreparator->RemovePredictor(j);
    fInputs.erase(fInputs.begin() + j);
    fvKeptInputs.erase(fvKeptInputs.begin() + j);
  }
  fNInputs = static_cast<int>(fInputs.size());
}

MCStatus NBAlgorithm::CountSource(MultiPassRecordIter& data, int nRecords, bool rebin) {
  NBInternalAdapter adapter(data, nRecords, *fpPreparator);
  const MCStatus counted = CountData(adapter, true);
  AddRecords(fExcluded.fNRecords, adapter.GetExcludedCount());
  fExcluded.fWeight += adapter.GetWExcludedCount();
  // A failure of the source itself says more than what the count made of it.
  static_cast<void>(Raise(adapter.GetStatus()));
  static_cast<void>(Raise(counted));
  if (fStatus.IsError()) return fStatus;
  if (rebin) fpPreparator->RebinEncoders(fInputs);
  return fStatus;
}

MCStatus NBAlgorithm::BuildModel(MultiPassRecordIter& data, int nRecords) {
  if (MustStop()) return fStatus;
  fbBuilt = false;
  if (nRecords < 1) return Raise(MCNaive::Error(MCNaive::kNoRecordsToProcess));
  Prepare(false, nRecords);
  ResetAllCounts(true);
  static_cast<void>(CountSource(data, nRecords, true));
  if (!fStatus.IsError() && !data.NewPass()) {
    static_cast<void>(Raise(MCNaive::Error(MCNaive::kSourceFailed)));
  }
  fbBuilt = !MustStop();
  return fStatus;
}

MCStatus NBAlgorithm::Update(MultiPassRecordIter& data, int nRecords) {
  if (MustStop()) return fStatus;
  if (nRecords < 1) return Raise(MCNaive::Error(MCNaive::kNoRecordsToProcess));
  Prepare(false, nRecords);
  static_cast<void>(CountSource(data, nRecords, false));
  fbBuilt = !MustStop();
  return fStatus;
}

MCStatus NBAlgorithm::CheckSelection(MultiPassRecordIter& data, int nRecords, int size,
                                     const MultiPassRecordIter* test, int nTest) const {
  if (!data.HasMore()) return MCNaive::Error(MCNaive::kNoSelectionData);
  if (nRecords < 1) return MCNaive::Error(MCNaive::kNoRecordsToProcess);
  if (test != nullptr && nTest == 0) return MCNaive::Error(MCNaive::kEmptyTestSample);
  const int forced = fVarList.GetNumInputVars();
  if (size == -1 || size > forced) return {};
  MCStatus status = MCNaive::Error(MCNaive::kSizeWithinForced);
  status.SetDiscreteDatum(0, size);
  status.SetDiscreteDatum(1, forced);
  return status;
}

MCStatus NBAlgorithm::LoadSelectionData(MultiPassRecordIter& data, int nRecords, bool inMemory,
                                        Selection& selection) {
  const MCStatus stored =
      fpPreparator->ProcessSource(data, nRecords, inMemory, selection.fpStore, selection.fNStored,
                                  fExcluded, fSettings.GetTempDir());
  if (fCancel.IsCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (Raise(stored).IsError()) return fStatus;
  const int first = fpPreparator->GetFirstInput();
  const MCStatus counted = CountData(*selection.fpStore, false);
  if (Raise(counted).IsError()) return fStatus;
  std::vector<int> columns(first);
  std::iota(columns.begin(), columns.end(), 0);
  for (int j : fvKeptInputs) columns.push_back(first + j);
  selection.fpView = std::make_unique<MCNaive::NBColumnView>(*selection.fpStore, columns);
  selection.fbInMemory = inMemory;
  return {};
}

int NBAlgorithm::DecideSize(int size, int forced, int candidates) {
  if (size == -1) return NBFormulas::ComputeAutomaticSize(forced, candidates);
  const int total = forced + candidates;
  if (size <= total) return size;
  MCStatus reduced = MCNaive::Warning(MCNaive::kSizeReduced);
  reduced.SetDiscreteDatum(0, size);
  reduced.SetDiscreteDatum(1, forced);
  reduced.SetDiscreteDatum(2, candidates);
  static_cast<void>(Raise(reduced));
  return total;
}

MCStatus NBAlgorithm::Dispatch(Selection& selection, int size, bool exact,
                               MultiPassRecordIter* test, int nTest, int nReport,
                               std::vector<int>& selected,
                               std::vector<std::pair<int, double>>& results) {
  const int forced = fVarList.GetNumInputVars();
  const int candidates = fVarList.GetNumPossibleInputVars();
  selection.fpSelector = std::make_unique<NBAttributeSelector>(fInputs, fOutput, fVarList,
                                                               fSettings, fCancel, fTotalWeight);
  const int reported = NBFormulas::ComputeReportCount(nReport, forced, candidates);
  const int maxSize = DecideSize(size, forced, candidates);
  NBAttributeSelector& selector = *selection.fpSelector;
  MultiPassRecordIter& data = *selection.fpView;
  const int nStored = selection.fNStored;
  if (exact) return selector.SelectExact(maxSize, data, nStored, selection.fbInMemory, selected);
  if (test == nullptr) {
    return selector.SelectMaxBIC(maxSize, data, nStored, selection.fbInMemory, selected, results,
                                 reported);
  }
  return selector.SelectMaxTestData(maxSize, data, nStored, selection.fbInMemory, *test, nTest,
                                    selected, results, reported, fpPreparator.get());
}

void NBAlgorithm::KeepChosenInputs() {
  fpPreparator->UpdateInputInfo(false);
  for (int j = static_cast<int>(fInputs.size()) - 1; j >= 0; --j) {
    if (fVarList.GetVariableRole(fInputs[j].GetVarIndex()) != INBVariable::kInput) {
      fInputs.erase(fInputs.begin() + j);
    }
  }
  fNInputs = static_cast<int>(fInputs.size());
  fpPreparator->RebinEncoders(fInputs);
}

MCStatus NBAlgorithm::SelectAttributes(MultiPassRecordIter& data, int nRecords,
                                       std::vector<int>& selected,
                                       std::vector<double>& logLikelihoods,
                                       std::vector<std::pair<int, double>>& results, int size,
                                       bool exact, MultiPassRecordIter* test, int nTest,
                                       int nReport, std::ostream* xml, MCApplicInfo4XML* appInfo) {
  selected.clear();
  logLikelihoods.clear();
  results.clear();
  if (MustStop()) return fStatus;
  if (Raise(CheckSelection(data, nRecords, size, test, nTest)).IsError()) return fStatus;
  fbBuilt = false;
  const bool inMemory = fSettings.GetMaxRecordsInMemory() >= nRecords;
  Prepare(true, nRecords);
  ResetAllCounts(true);
  Selection selection;
  MCStatus done = LoadSelectionData(data, nRecords, inMemory, selection);
  if (!done.IsError()) {
    done = Dispatch(selection, size, exact, test, nTest, nReport, selected, results);
  }
  if (!Raise(done).IsError() && !fCancel.IsCancel()) {
    selection.fpSelector->GetLoglikelihood(logLikelihoods);
    if (xml != nullptr) {
      static_cast<void>(Raise(selection.fpSelector->ExportXML(*xml, test != nullptr, appInfo)));
    }
    KeepChosenInputs();
  }
  fbBuilt = !MustStop();
  return fStatus;
}

MCStatus NBAlgorithm::MergeModel(const INBAlgorithm* other, bool computeProbabilities) {
  if (MustStop()) return fStatus;
  const auto* that = dynamic_cast<const NBAlgorithm*>(other);
  int differing = -1;
  if (that == nullptr || !that->fbBuilt || !fbBuilt || that == this ||
      !fVarList.CanMergeWith(that->fVarList, differing)) {
    MCStatus status = MCNaive::Error(MCNaive::kModelsDiffer);
    status.SetDiscreteDatum(0, differing);
    return status;
  }
  const std::vector<int> targets = fOutput.MergeTargetCounts(that->fOutput);
  for (auto* stats : {&fTrainStats, &fTestStats}) {
    if (*stats) (*stats)->Grow(fOutput.GetNCategories());
  }
  RestoreBins();
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    fInputs[j].MergePredictorCounts(that->fInputs[j], targets, fOutput.GetNCategories());
  }
  AddRecords(fNRecords, that->fNRecords);
  fTotalWeight += that->fTotalWeight;
  AddRecords(fExcluded.fNRecords, that->fExcluded.fNRecords);
  fExcluded.fWeight += that->fExcluded.fWeight;
  if (computeProbabilities) FinishCounts();
  fpPreparator->RebinEncoders(fInputs);
  return fStatus;
}

void NBAlgorithm::GetNValidNExcluded(double& validWeight, double& excludedWeight, int& nValid,
                                     int& nExcluded) const {
  validWeight = fTotalWeight;
  excludedWeight = fExcluded.fWeight;
  nValid = fNRecords;
  nExcluded = fExcluded.fNRecords;
}

void NBAlgorithm::Display(std::ostream& os) const {
  os << GetComponentVersion() << '\n'
     << "Model " << (fbBuilt ? "built" : "not built") << ", records " << fNRecords << ", weight "
     << fTotalWeight << '\n';
  if (fStatus.IsError()) os << "Error " << fStatus.GetErrorCode() << '\n';
  fSettings.Display(os);
  fVarList.Display(os);
  if (fpPreparator) fpPreparator->Display(os);
  fOutput.Display(os);
  for (const NBayesInput& input : fInputs) input.Display(os);
}
