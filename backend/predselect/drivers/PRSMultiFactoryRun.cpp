// The NAIVEBAYES driver's model run: engine, selection, model file.
#include <algorithm>
#include <iostream>
#include <iterator>
#include <sstream>

#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSMultiFactory.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/predsele.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/xml/MCApplicInfo4XML.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/output/BpError.h"
#include "host/output/pivot/BpComposite.h"
#include "host/session/HostFunctions.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/OutputFile.h"
#include "host/session/SessionScope.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/variables/NBVarList.h"

namespace {

constexpr const char* kSource = "backend/predselect/PRSMultiFactory";
constexpr int kShow = 2;
constexpr int kWarning = 2;
constexpr int kError = 3;
constexpr int kAllTestRecords = -1;
constexpr const char* kSubsets = "subsets.xml";

// Texts by status; ^1 is what the status names (DisplayMessage), or its code.
struct StatusText {
  std::int64_t fCode;
  const char* fText;
};

constexpr StatusText kStatusTexts[] = {
    {MCNaive::kNoRecordsFound, "All cases excluded in Predictor Selection..."},
    {MCNaive::kNoSelectionData, "All cases excluded in Predictor Selection..."},
    {MCNaive::kNoTestRecords, "No valid cases in test sample..."},
    {MCNaive::kTooFewRecords, "Too few training cases..."},
    {MCNaive::kTemporaryFile, "Temporary file in ^1 failed..."},
    {MCNaive::kSizeReduced, "Exact size reduced in training cases..."},
    {MCNaive::kPredictorDropped, "Predictor ^1 constant in training cases..."},
    {MCNaive::kNoInputToExport, "No predictor for the model file..."},
    {MCNaive::kTextNotForXML, "Model file cannot hold the texts of variable ^1..."},
};

MCApplicInfo4XML ApplicationInfo() {
  const MCHost::AppParams& application = GetAppParams();
  return {true, application.fName, application.fVersion, application.fCopyright};
}

const char* TextOf(const MCNaive::MCStatus& status) {
  for (const StatusText& entry : kStatusTexts) {
    if (entry.fCode == status.GetErrorCode()) return entry.fText;
  }
  return status.IsError() ? "Naive Bayes run failed, status ^1..." : nullptr;
}

}  // namespace

// The place or the variable that a status is about, else its code.
std::string PRSMultiFactory::NameIn(const MCNaive::MCStatus& status) const {
  const auto var = static_cast<int>(status.GetDiscreteDatum(0));
  const bool namesVariable = status.GetErrorCode() == MCNaive::kPredictorDropped ||
                             status.GetErrorCode() == MCNaive::kTextNotForXML;
  if (namesVariable && var >= 0 && var < fpNBVarList->Size()) {
    return fpNBVarList->GetVarAt(var)->GetVariableName();
  }
  if (status.GetErrorCode() == MCNaive::kTemporaryFile) {
    return fpSpecs->GetNaiveSettingsPtr()->GetTempDir();
  }
  return std::to_string(status.GetErrorCode());
}

void PRSMultiFactory::DisplayMessage(const MCNaive::MCStatus& status) const {
  const char* text = status.IsOK() ? nullptr : TextOf(status);
  if (text == nullptr) return;
  const bool isTest = status.GetErrorCode() == MCNaive::kNoTestRecords;
  if (isTest && !fpSpecs->GetMultiTrainSamp()) return;
  // A maximum may well be more than there are.
  const bool isReduced = status.GetErrorCode() == MCNaive::kSizeReduced;
  if (isReduced && fpSpecs->GetMultiExactSize() < 1) return;
  BpComposite composite(text);
  composite.AddLiteral(NameIn(status));
  BpError(composite, kShow, status.IsError() ? kError : kWarning);
}

bool PRSMultiFactory::RunNBComponent() {
  if (fStatus.IsError() || fpAdapter == nullptr || fpTrainRecIter == nullptr) return false;
  if (!OpenModelFile()) return false;
  if ((fNUniquePreds >= 1 || fNForcePreds > 0) && !fpTrainRecIter->NewPass()) {
    return IsPassComplete(*fpTrainRecIter);
  }
  if (!CreateEngine()) return false;
  BuildOrSelect();
  if (!FinishEngine()) return false;
  if (fbSaveModel && !WriteModel()) return false;
  if (PRSIsStateWanted() && !PRSSaveState(*fpNBAlgorithm)) return false;
  if (NeedsScoring() && !ScoringDataPass()) return false;
  const bool testLayerWanted =
      IsClassified() && fpSpecs->GetMultiTrainSamp() && !fpSpecs->GetMultiTestData();
  if (testLayerWanted && fpNBAlgorithm->GetTestOutStats() == nullptr) {
    fMessages.NoValidTestCasesClassify();
  }
  return true;
}

// Before the work begins, so that a path that cannot be written costs no time.
bool PRSMultiFactory::OpenModelFile() {
  if (!fbSaveModel) return true;
  const std::string path = ExtNameStr(fpSpecs->GetModelFileName());
  try {
    const std::string use = MCHost::CurrentSession().UseOf(path);
    if (!use.empty()) {
      throw MCHost::HostIOError(path, "", "would take the place of " + use + "; give another name");
    }
    fpModelFile = std::make_unique<MCHost::OutputFile>(path);
    return true;
  } catch (const MCHost::HostIOError& error) {
    PRSFileError(error);
    return false;
  }
}

bool PRSMultiFactory::CreateEngine() {
  NaiveBayesSettings* settings = fpSpecs->GetNaiveSettingsPtr();
  MCCommon::Assert(settings != nullptr, "fpSettings != 0", kSource);
  fpProgress = std::make_unique<PRSProgress>();
  settings->SetProgressListener(fpProgress.get());
  // A selection reports its steps, a plain build its records.
  settings->SetNSkippedReports(fbRunSelection ? 0 : PRSProgress::kRecords - 1);
  NBFactory factory;
  fpNBAlgorithm = factory.CreateNBAlgorithm(*settings, *fpNBVarList);
  fStatus = fpNBAlgorithm == nullptr ? factory.GetStatus() : fpNBAlgorithm->GetStatus();
  if (fStatus.IsError()) DisplayMessage(fStatus);
  return !fStatus.IsError();
}

void PRSMultiFactory::BuildOrSelect() {
  const int nRecords = fpAdapter->GetRecordCount();
  if (!fbRunSelection) {
    fStatus = fpNBAlgorithm->BuildModel(*fpTrainRecIter, nRecords);
    return;
  }
  MCCommon::Assert(fpNBVarList->GetNumInputVars() == fNForcePreds, "nInputs == fNForcePreds",
                   kSource);
  MCCommon::Assert(fpNBVarList->GetNumPossibleInputVars() == fNUniquePreds,
                   "nPossibleInputs == fNUniquePreds", kSource);
  const bool isExact = fpSpecs->GetMultiExactSize() >= 1;
  const int asked = isExact ? fpSpecs->GetMultiExactSize() : fpSpecs->GetMultiMaxSize();
  const int size = asked > 0 ? asked + fNForcePreds : -1;
  const int nReport = fNUniquePreds + (fNForcePreds >= 1 ? 1 : 0);
  std::ostringstream results;
  MCApplicInfo4XML info = ApplicationInfo();
  std::ostream* wanted = PRSAreResultsWanted() ? &results : nullptr;
  fStatus = fpNBAlgorithm->SelectAttributes(
      *fpTrainRecIter, nRecords, fSelectPredictors, fAverageLogValues, fSelectResults, size,
      isExact, fpTestRecIter.get(), kAllTestRecords, nReport, wanted, &info);
  fResultDocument = results.str();
}

bool PRSMultiFactory::FinishEngine() {
  if (!IsPassComplete(*fpTrainRecIter)) return false;
  if (fpTestRecIter != nullptr && !IsPassComplete(*fpTestRecIter)) return false;
  fStatus = fpNBAlgorithm->GetStatus();
  if (fStatus.GetErrorCode() == MCNaive::kPredictorDropped) {
    NameDroppedInputs();
  } else {
    DisplayMessage(fStatus);
  }
  if (fStatus.IsError()) return false;
  const auto nForced = static_cast<int>(GetForcedInputs().size());
  if (fbRunSelection && fpNBAlgorithm->GetNumberOfInputVars() == nForced) {
    fMessages.NoUniquePredsSelected();
  }
  if (display_naive_bayes) fpNBAlgorithm->Display(std::cerr);
  if (!WriteResultDocument()) return false;
  fpTrainRecIter.reset();
  fpTestRecIter.reset();
  return true;
}

// A status names one predictor only.
void PRSMultiFactory::NameDroppedInputs() const {
  const NBVarList& varList = fpNBAlgorithm->GetVarList();
  for (int i = 0; i < varList.Size(); ++i) {
    if (fpNBVarList->GetVariableRole(i) != INBVariable::kInput ||
        varList.GetVariableRole(i) != INBVariable::kUnused) {
      continue;
    }
    MCNaive::MCStatus dropped(MCNaive::kPredictorDropped, true);
    dropped.SetDiscreteDatum(0, i);
    DisplayMessage(dropped);
  }
}

bool PRSMultiFactory::WriteResultDocument() {
  const bool isRefused = fStatus.GetErrorCode() == MCNaive::kTextNotForXML;
  if (isRefused && PRSAreResultsWanted()) {
    PRSFileError(MCHost::HostIOError(MCHost::CurrentSession().ResultsPrefix() + kSubsets, "",
                                     "a text holds a character that XML does not allow"));
    return false;
  }
  if (fResultDocument.empty()) return true;
  return PRSWriteResult(kSubsets, [this](std::ostream& os) {
    os << fResultDocument;
    return true;
  });
}

std::vector<int> PRSMultiFactory::GetForcedInputs() const {
  std::vector<int> inputs;
  const std::vector<int>* forced = fpSpecs->GetForcePredListPtr();
  if (forced == nullptr) return inputs;
  const NBVarList& varList = fpNBAlgorithm->GetVarList();
  std::copy_if(forced->begin(), forced->end(), std::back_inserter(inputs), [&](int var) {
    return varList.GetVariableRole(fpVarSpecs->GetRecVarIndex(var)) == INBVariable::kInput;
  });
  return inputs;
}

bool PRSMultiFactory::WriteModel() {
  MCApplicInfo4XML info = ApplicationInfo();
  std::ostringstream document;
  const MCNaive::MCStatus status = fpNBAlgorithm->ExportModelXML(document, &info);
  if (IsStopped()) return false;
  if (!status.IsOK()) {
    fStatus = {status.GetErrorCode(), false};
    fStatus.SetDiscreteDatum(0, status.GetDiscreteDatum(0));
    DisplayMessage(fStatus);
    return false;
  }
  return PRSCommit(*fpModelFile, document.str());
}

bool PRSMultiFactory::NeedsScoring() const {
  return !fpSpecs->GetPredValVarName().IsEmpty() || fNSaveDepCats >= 1 || IsClassified();
}
