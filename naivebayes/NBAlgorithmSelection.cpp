// Selection of predictors: what is asked is checked, the records are stored and counted, the
// selector chooses, and the model is cut down to its choice.
#include <algorithm>
#include <utility>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBWithinMemory.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/validation/NBCrossValidator.h"

using MCCommon::MultiPassRecordIter;
using MCNaive::MCStatus;

MCStatus NBAlgorithm::CheckSelection(const NBSelectionRequest& request) const {
  const bool isHere = request.fpParts == nullptr;
  if (isHere && !request.fData.HasMore()) return MCNaive::Error(MCNaive::kNoSelectionData);
  if (isHere && request.fNRecords < 1) return MCNaive::Error(MCNaive::kNoRecordsToProcess);
  if (request.fpTest != nullptr && request.fNTest == 0) {
    return MCNaive::Error(MCNaive::kEmptyTestSample);
  }
  const int forced = fVarList.GetNumInputVars();
  if (request.fSize == -1 || request.fSize > forced) return {};
  MCStatus status = MCNaive::Error(MCNaive::kSizeWithinForced);
  status.SetDiscreteDatum(0, request.fSize);
  status.SetDiscreteDatum(1, forced);
  return status;
}

MCStatus NBAlgorithm::LoadSelectionData(const NBSelectionRequest& request, bool inMemory,
                                        NBStored& stored) {
  const MCStatus loaded = fpPreparator->ProcessSource(
      request.fData, {request.fNRecords, inMemory, fSettings.GetTempDir()}, stored);
  fExcluded = stored.fExcluded;
  if (fCancel.IsCancel()) return MCNaive::Error(MCNaive::kCancelled);
  if (Raise(loaded).IsError()) return fStatus;
  const MCStatus counted = CountData(*stored.fpStore, false);
  if (Raise(counted).IsError()) return fStatus;
  stored.fpStore->KeepInputs(fvKeptInputs);
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

MCStatus NBAlgorithm::Dispatch(const NBSelectionRequest& request,
                               const NBAttributeSelector::Training& training,
                               NBAttributeSelector& selector, NBSelectionResult& result) {
  const int forced = fVarList.GetNumInputVars();
  const int candidates = fVarList.GetNumPossibleInputVars();
  const int reported = NBFormulas::ComputeReportCount(request.fNReport, forced, candidates);
  const int maxSize = DecideSize(request.fSize, forced, candidates);
  if (request.fbExact) return selector.SelectExact(maxSize, training, result);
  if (request.fbTestInParts) {
    return selector.SelectMaxTestParts(maxSize, training, reported, result);
  }
  if (request.fpTest == nullptr) {
    return selector.SelectMaxBIC(maxSize, training, reported, result);
  }
  return selector.SelectMaxTestData(
      maxSize, training, {*request.fpTest, request.fNTest, *fpPreparator}, reported, result);
}

void NBAlgorithm::KeepChosenInputs() {
  fpPreparator->UpdateInputInfo(false);
  std::erase_if(fInputs, [this](const NBayesInput& input) {
    return fVarList.GetVariableRole(input.GetVarIndex()) != INBVariable::kInput;
  });
  fNInputs = static_cast<int>(fInputs.size());
  fpPreparator->RebinEncoders(fInputs);
}

bool NBAlgorithm::CrossValidate(const NBSelectionRequest& request, NBCodeStore& records) {
  if (request.fpValidation == nullptr) return true;
  const int forced = fVarList.GetNumInputVars();
  const int candidates = fVarList.GetNumPossibleInputVars();
  const int size = request.fSize == -1 ? NBFormulas::ComputeAutomaticSize(forced, candidates)
                                       : std::min(request.fSize, forced + candidates);
  NBCrossValidator validator({fOutput, fInputs}, fVarList, fTotalWeight, records, fCancel,
                             fWorkers);
  return validator.Run({size, request.fbExact}, *request.fpValidation);
}

void NBAlgorithm::RunSelection(const NBSelectionRequest& request, NBSelectionResult& result) {
  const bool inMemory = fSettings.GetMaxRecordsInMemory() >= request.fNRecords;
  NBStored stored;
  if (Raise(LoadSelectionData(request, inMemory, stored)).IsError()) return;
  if (inMemory && !CrossValidate(request, *stored.fpStore)) {
    static_cast<void>(Raise(MCNaive::Error(MCNaive::kCancelled)));
    return;
  }
  NBAttributeSelector selector(fInputs, fOutput, fVarList, fSettings, fCancel, fTotalWeight,
                               fWorkers);
  const MCStatus done =
      Dispatch(request, {*stored.fpStore, stored.fNRecords, inMemory}, selector, result);
  if (Raise(done).IsError()) return;
  FinishSelection(request, request.fpTest != nullptr, selector, result);
}

void NBAlgorithm::FinishSelection(const NBSelectionRequest& request, bool byTest,
                                  NBAttributeSelector& selector, NBSelectionResult& result) {
  if (fCancel.IsCancel()) return;
  selector.GetLoglikelihood(result.fvLogLikelihoods);
  if (request.fpXML != nullptr) {
    static_cast<void>(Raise(selector.ExportXML(*request.fpXML, byTest, request.fpAppInfo)));
  }
  KeepChosenInputs();
}

MCStatus NBAlgorithm::SelectAttributes(const NBSelectionRequest& request,
                                       NBSelectionResult& result) {
  return Changed(MCNaive::WithinMemory([&] { return DoSelect(request, result); }));
}

MCStatus NBAlgorithm::DoSelect(const NBSelectionRequest& request, NBSelectionResult& result) {
  result = {};
  if (MustStop()) return fStatus;
  if (Raise(CheckSelection(request)).IsError()) return fStatus;
  fbBuilt = false;
  Prepare(true, request.fNRecords);
  ResetAllCounts(true);
  request.fpParts == nullptr ? RunSelection(request, result) : SelectInParts(request, result);
  fbBuilt = !MustStop();
  return fStatus;
}

MCStatus NBAlgorithm::SelectAttributes(MultiPassRecordIter& data, int nRecords,
                                       std::vector<int>& selected,
                                       std::vector<double>& logLikelihoods,
                                       std::vector<std::pair<int, double>>& results, int size,
                                       bool exact, MultiPassRecordIter* test, int nTest,
                                       int nReport, std::ostream* xml, MCApplicInfo4XML* appInfo) {
  NBSelectionResult result;
  const NBSelectionRequest request = {data,  nRecords, size, exact,  test,
                                      nTest, nReport,  xml,  appInfo};
  static_cast<void>(SelectAttributes(request, result));
  selected = std::move(result.fvSelected);
  logLikelihoods = std::move(result.fvLogLikelihoods);
  results = std::move(result.fvResults);
  return fStatus;
}
