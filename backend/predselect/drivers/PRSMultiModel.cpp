#include "backend/predselect/drivers/PRSMultiModel.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <new>
#include <sstream>

#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSLeaks.h"
#include "backend/predselect/drivers/PRSMultiMetaData.h"
#include "backend/predselect/drivers/PRSMultiParts.h"
#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/predsele.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/WholeText.h"
#include "common/xml/MCApplicInfo4XML.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/WholeTable.h"
#include "host/output/BpError.h"
#include "host/output/ShowText.h"
#include "host/session/HostFunctions.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/OutputFile.h"
#include "host/session/SessionScope.h"
#include "modelfiles/NBPartModel.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/parts/NBCountsAlone.h"
#include "naivebayes/parts/NBPartCodes.h"
#include "naivebayes/variables/NBVarList.h"

namespace {

constexpr const char* kSource = PRSMultiRun::kSource;
constexpr const char* kSubsets = "subsets.xml";

// In the place of records that lie elsewhere.
class NoRecords : public MCCommon::MultiPassRecordIter {
 public:
  bool HasMore() override { return false; }
  const MCCommon::Record* NextRecord() override { return nullptr; }
  FailReason GetFailReason() const override { return kNoRecords; }
  bool NewPass() override { return true; }
};

MCApplicInfo4XML ApplicationInfo() {
  const MCHost::AppParams& application = GetAppParams();
  return {true, application.fName, application.fVersion, application.fCopyright};
}

}  // namespace

PRSMultiModel::PRSMultiModel(PRSMultiRun& run, PRSMultiMetaData& metaData)
    : fRun(run), fMetaData(metaData), fSpecs(run.Specs()) {}

PRSMultiModel::~PRSMultiModel() = default;

bool PRSMultiModel::OpenModelFile() {
  if (!fRun.IsModelSaved()) return true;
  const std::string path = ExtNameStr(fSpecs.GetModelFileName());
  try {
    const std::string use = MCHost::CurrentSession().UseOf(path);
    if (!use.empty()) {
      throw MCHost::HostIOError(
          path, "", MCHost::KeyText("would take the place of ^1; give another name", {use}));
    }
    fpModelFile = std::make_unique<MCHost::OutputFile>(path);
    return true;
  } catch (const MCHost::HostIOError& error) {
    PRSFileError(error);
    return false;
  }
}

bool PRSMultiModel::CreateEngine() {
  NaiveBayesSettings* settings = fSpecs.GetNaiveSettingsPtr();
  MCCommon::Assert(settings != nullptr, "fpSettings != 0", kSource);
  fpProgress = std::make_unique<PRSProgress>();
  settings->SetProgressListener(fpProgress.get());
  // A selection reports its steps, a plain build its records.
  settings->SetNSkippedReports(fRun.IsSelecting() ? 0 : PRSProgress::kRecords - 1);
  settings->SetNThreads(MCHost::CurrentSession().Threads());
  NBFactory factory;
  fpNBAlgorithm = factory.CreateNBAlgorithm(*settings, fMetaData.VarList());
  fRun.SetStatus(fpNBAlgorithm == nullptr ? factory.GetStatus() : fpNBAlgorithm->GetStatus());
  if (fRun.GetStatus().IsError()) fRun.DisplayMessage(fRun.GetStatus());
  return !fRun.GetStatus().IsError();
}

bool PRSMultiModel::Build(NaiveDataSourceIter& train, NaiveDataSourceIter* test) {
  if (!CreateEngine()) return false;
  BuildOrSelect(train, test);
  if (!fRun.IsPassComplete(train)) return false;
  if (test != nullptr && !fRun.IsPassComplete(*test)) return false;
  if (!ReportEngine()) return false;
  WarnOfLeaks(train.GetNCases());
  WarnOfValidation();
  return true;
}

bool PRSMultiModel::BuildInParts(PRSMultiParts& parts) {
  if (!CreateEngine()) return false;
  if (fRun.IsSelecting()) {
    NoRecords none;
    Select({.fData = none,
            .fNRecords = fRun.Adapter().GetRecordCount(),
            .fpParts = &parts,
            .fbTestInParts = fSpecs.GetMultiTestData()});
  } else {
    fRun.SetStatus(fpNBAlgorithm->BuildModelInParts(parts));
  }
  if (!parts.IsPassComplete() || !ReportEngine()) return false;
  WarnOfLeaks(fRun.Source().Table().Whole()->fRanges.CaseCount());
  return true;
}

bool PRSMultiModel::CountPart(NaiveDataSourceIter& train, NaiveDataSourceIter* test,
                              NBPartCounts& counts, std::unique_ptr<NBPartCodes>& codes) {
  const NBPartSource source = {train, fRun.Adapter().GetRecordCount(), test, fRun.IsSelecting()};
  if (!CreateEngine() || !Count(source, train, counts, codes)) return false;
  return test == nullptr || fRun.IsPassComplete(*test);
}

bool PRSMultiModel::Count(const NBPartSource& source, NaiveDataSourceIter& train,
                          NBPartCounts& counts, std::unique_ptr<NBPartCodes>& codes) {
  fRun.SetStatus(fpNBAlgorithm->CountPart(source, counts, codes));
  counts.fNCases = train.GetNCases();
  if (!fRun.IsPassComplete(train)) return false;
  if (fRun.GetStatus().IsError()) fRun.DisplayMessage(fRun.GetStatus());
  return !fRun.GetStatus().IsError();
}

bool PRSMultiModel::IsPartSaved() const {
  const MCHost::WholeTable* whole = fRun.Source().Table().Whole();
  return whole != nullptr && whole->fpPasses == nullptr && PRSIsStateWanted() &&
         !fRun.IsSelecting();
}

bool PRSMultiModel::BuildOfPart(NaiveDataSourceIter& train) {
  if (!CreateEngine()) return false;
  const MCHost::WholeTable& whole = *fRun.Source().Table().Whole();
  NBPartModel part{
      whole.fRanges.Digest(), {}, fpNBAlgorithm->GetSettings(), fpNBAlgorithm->GetVarList(), {}};
  if (whole.fPart >= 0) part.fParts.push_back(whole.fPart);
  std::unique_ptr<NBPartCodes> none;
  const NBPartSource source = {train, fRun.Adapter().GetRecordCount(), nullptr, false, false};
  if (!Count(source, train, part.fCounts, none) || !PRSSaveState(part)) return false;
  if (part.fCounts.fNRecords == 0) return false;
  NBCountsAlone counts(part.fCounts);
  fRun.SetStatus(fpNBAlgorithm->BuildModelInParts(counts));
  if (!ReportEngine()) return false;
  WarnOfLeaks(train.GetNCases());
  return true;
}

void PRSMultiModel::WarnOfLeaks(std::int64_t tableCases) const {
  PRSLeaks leaks(fSpecs, fRun.Source(), fRun.Adapter(), tableCases);
  for (NBInputTraits input : fpNBAlgorithm->GetLeakTraits()) {
    // What the model did not take cannot mislead it; the other leaks speak against a candidate too.
    const NBVarList& varList = fpNBAlgorithm->GetVarList();
    const bool isTaken = varList.GetVariableRole(input.fVarIndex) == INBVariable::kInput;
    if (!isTaken) input.fTraits.fGainOnOthers = 0.0;
    leaks.Look(fRun.VarSpecs().GetKOVAVarIndex(input.fVarIndex), input.fTraits);
  }
  leaks.Warn();
}

void PRSMultiModel::WarnOfValidation() const {
  const int nFolds = fSpecs.Options().fValidation.fFolds;
  if (nFolds == 0) return;
  const std::vector<std::string> folds{std::to_string(nFolds)};
  if (fValidation.fvRuns.empty()) {
    const bool isHeld =
        fRun.Adapter().GetRecordCount() <= fSpecs.GetNaiveSettingsPtr()->GetMaxRecordsInMemory();
    MCHost::RaiseMessage(
        MCHost::OutputMessage::kWarning,
        isHeld ? "Fewer cases than ^1 folds..." : "Not cross-validated for want of memory...",
        isHeld ? folds : std::vector<std::string>());
    return;
  }
  bool isRare = false;
  for (int k = 0; k < fpNBAlgorithm->GetNTargetCategories(); ++k) {
    const int records = fpNBAlgorithm->GetTargetCategoryRecords(k);
    isRare = isRare || (records > 0 && records < nFolds);
  }
  if (!isRare) return;
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning,
                       "A category with fewer cases than ^1 folds...", folds);
}

void PRSMultiModel::BuildOrSelect(NaiveDataSourceIter& train, NaiveDataSourceIter* test) {
  if (fRun.IsSelecting()) {
    return Select({.fData = train, .fNRecords = fRun.Adapter().GetRecordCount(), .fpTest = test});
  }
  fRun.SetStatus(fpNBAlgorithm->BuildModel(train, fRun.Adapter().GetRecordCount()));
}

void PRSMultiModel::Select(NBSelectionRequest request) {
  const int nForced = fMetaData.GetNForcePreds();
  const int nUnique = fMetaData.GetNUniquePreds();
  MCCommon::Assert(fMetaData.VarList().GetNumInputVars() == nForced, "nInputs == fNForcePreds",
                   kSource);
  MCCommon::Assert(fMetaData.VarList().GetNumPossibleInputVars() == nUnique,
                   "nPossibleInputs == fNUniquePreds", kSource);
  const bool isExact = fSpecs.GetMultiExactSize() >= 1;
  const int asked = isExact ? fSpecs.GetMultiExactSize() : fSpecs.GetMultiMaxSize();
  std::ostringstream document;
  MCApplicInfo4XML info = ApplicationInfo();
  const PRSValidation& validation = fSpecs.Options().fValidation;
  fValidation = {.fNFolds = validation.fFolds,
                 .fNRepeats = validation.fRepeats,
                 .fSeed = static_cast<std::uint64_t>(validation.fSeed)};
  request.fSize = asked > 0 ? asked + nForced : -1;
  request.fbExact = isExact;
  request.fNReport = nUnique + (nForced >= 1 ? 1 : 0);
  request.fpXML = PRSAreResultsWanted() ? &document : nullptr;
  request.fpAppInfo = &info;
  request.fpValidation = validation.fFolds > 0 ? &fValidation : nullptr;
  fRun.SetStatus(fpNBAlgorithm->SelectAttributes(request, fSelection));
  fResultDocument = MCCommon::WholeText(document);
}

bool PRSMultiModel::ReportEngine() {
  fRun.SetStatus(fpNBAlgorithm->GetStatus());
  if (fRun.GetStatus().GetErrorCode() == MCNaive::kPredictorDropped) {
    NameDroppedInputs();
  } else {
    fRun.DisplayMessage(fRun.GetStatus());
  }
  if (fRun.GetStatus().IsError()) return false;
  const auto nForced = static_cast<int>(GetForcedInputs().size());
  if (fRun.IsSelecting() && fpNBAlgorithm->GetNumberOfInputVars() == nForced) {
    PRSMessages().NoUniquePredsSelected();
  }
  if (display_naive_bayes) fpNBAlgorithm->Display(std::cerr);
  return WriteResultDocument();
}

std::vector<int> PRSMultiModel::GetDroppedInTraining() const {
  std::vector<int> dropped;
  for (int i = 0; fpNBAlgorithm != nullptr && i < fMetaData.VarList().Size(); ++i) {
    const INBVariable::VariableRole role = fMetaData.VarList().GetVariableRole(i);
    const bool isPredictor = role == INBVariable::kInput || role == INBVariable::kPossibleInput;
    if (isPredictor && fpNBAlgorithm->GetVarList().GetVariableRole(i) == INBVariable::kUnused) {
      dropped.push_back(fRun.VarSpecs().GetKOVAVarIndex(i));
    }
  }
  return dropped;
}

// A status names one predictor only; candidates are expected to come to nothing now and then.
void PRSMultiModel::NameDroppedInputs() const {
  for (const int var : GetDroppedInTraining()) {
    const int i = fRun.VarSpecs().GetRecVarIndex(var);
    if (fMetaData.VarList().GetVariableRole(i) != INBVariable::kInput) continue;
    MCNaive::MCStatus dropped(MCNaive::kPredictorDropped, true);
    dropped.SetDiscreteDatum(0, i);
    fRun.DisplayMessage(dropped);
  }
}

bool PRSMultiModel::WriteResultDocument() const {
  const std::int64_t code = fRun.GetStatus().GetErrorCode();
  const bool isText = code == MCNaive::kTextNotForXML;
  if ((isText || code == MCNaive::kWeightNotFinite) && PRSAreResultsWanted()) {
    PRSFileError(MCHost::HostIOError(
        MCHost::CurrentSession().ResultsPrefix() + kSubsets, "",
        MCHost::KeyText(isText ? "a text holds a character that XML does not allow"
                               : "the case weights add up to more than a number can hold")));
    return false;
  }
  if (fResultDocument.empty()) return true;
  return PRSWriteResult(kSubsets, [this](std::ostream& os) {
    os << fResultDocument;
    return true;
  });
}

std::vector<int> PRSMultiModel::GetForcedInputs() const {
  std::vector<int> inputs;
  const std::vector<int>* forced = fSpecs.GetForcePredListPtr();
  if (forced == nullptr) return inputs;
  const NBVarList& varList = fpNBAlgorithm->GetVarList();
  std::copy_if(forced->begin(), forced->end(), std::back_inserter(inputs), [&](int var) {
    return varList.GetVariableRole(fRun.VarSpecs().GetRecVarIndex(var)) == INBVariable::kInput;
  });
  return inputs;
}

bool PRSMultiModel::WriteFiles() {
  if (fRun.IsModelSaved() && !WriteModel()) return false;
  if (PRSIsStateWanted() && !IsPartSaved() && !PRSSaveState(*fpNBAlgorithm)) return false;
  return !PRSIsModelWanted() || MCHost::CurrentSession().TakeModel(*fpNBAlgorithm);
}

bool PRSMultiModel::WriteModel() {
  MCApplicInfo4XML info = ApplicationInfo();
  std::ostringstream document;
  const MCNaive::MCStatus status = fpNBAlgorithm->ExportModelXML(document, &info);
  if (fRun.IsStopped()) return false;
  if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
  if (status.IsOK()) return PRSCommit(*fpModelFile, MCCommon::WholeText(document));
  MCNaive::MCStatus failed(status.GetErrorCode(), false);
  failed.SetDiscreteDatum(0, status.GetDiscreteDatum(0));
  fLostModel = failed;
  return true;
}

void PRSMultiModel::ReportLostModel() {
  if (!fLostModel) return;
  fRun.SetStatus(*fLostModel);
  fRun.DisplayMessage(*fLostModel);
  MCHost::CurrentSession().ReportLostFile();
}
