#include "backend/predselect/drivers/PRSMultiFactory.h"

#include <cstdio>
#include <string>

#include "backend/predselect/command/PRSMessages.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSMultiCalibration.h"
#include "backend/predselect/drivers/PRSMultiScoring.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/state/StateBytes.h"
#include "feature/FSSettings.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/WholeTable.h"
#include "host/output/BpError.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/parts/NBPartClassified.h"
#include "naivebayes/parts/NBPartCodes.h"

namespace {

// As the user types it.
std::string Plain(double number) {
  char text[32];
  const int length = std::snprintf(text, sizeof(text), "%.15g", number);
  return {text, static_cast<std::size_t>(length)};
}

}  // namespace

PRSMultiFactory::PRSMultiFactory(PRSValidSpecs* specs, ProcedureDataSource& source)
    : fSpecs(*specs),
      fRun(*specs, source),
      fScreening(fRun),
      fMetaData(fRun, fScreening),
      fModel(fRun, fMetaData),
      fParts(source.Table()),
      fPartRequest(PRSPartRequest()) {
  if (!CheckParts() || fParts.AreThere()) return;
  fpTrainRecIter = fRun.NewStream(PRSMultiRun::Sample::kTraining);
  fpTrainRecIter->Start();
  // A part may have none.
  const bool isEmpty = fpTrainRecIter->GetFailReason() == MCCommon::RecordIterator::kNoRecords;
  if (isEmpty && !fPartRequest && !fModel.IsPartSaved()) {
    (void)fRun.Fail(MCNaive::kDataUnusable);
    fRun.AdapterMessages().NoValidCases(WhyNoCase());
  }
  // A part makes it when its turn comes, since it may have test cases alone.
  if (fRun.GetStatus().IsError() || !specs->GetMultiTestData() || fPartRequest) return;
  fpTestRecIter = fRun.NewStream(PRSMultiRun::Sample::kTest);
}

PRSMultiFactory::~PRSMultiFactory() = default;

bool PRSMultiFactory::CheckParts() {
  const MCHost::WholeTable* whole = fRun.Source().Table().Whole();
  if (whole == nullptr) return true;
  const PRSValidSpecs& specs = fRun.Specs();
  const bool isDrawn = specs.GetMultiTrainSampVar() < 0 && specs.GetMultiTrainSampPCT() > 0.0;
  const bool isSaving =
      !specs.GetPredValVarName().IsEmpty() || !specs.GetPredProbRootName().IsEmpty();
  const char* trouble = nullptr;
  if (fParts.AreThere() && isSaving) trouble = "Predictions are not saved over parts...";
  if (!fParts.AreThere() && isDrawn && whole->FirstCase() < 0) {
    trouble = "A random sample of a part needs its number...";
  }
  if (fParts.AreThere() && specs.Options().fValidation.fFolds > 0) {
    trouble = "Not cross-validated over parts...";
  }
  const auto calibration = MCHost::CurrentSession().Calibration().fMethod;
  if (fParts.AreThere() && calibration != MCHost::CalibrationWish::kNone) {
    trouble = "Not calibrated over parts...";
  }
  if (fModel.IsPartSaved() && specs.GetScreenStatusOn()) {
    trouble = "A part is not screened alone...";
  }
  if (trouble == nullptr) return true;
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, trouble);
  return fRun.Fail(MCNaive::kDataUnusable);
}

const char* PRSMultiFactory::WhyNoCase() const {
  return WhyNoCase(fpTrainRecIter->GetNCases(), fpTrainRecIter->GetNTestCases());
}

const char* PRSMultiFactory::WhyNoCase(std::int64_t cases, std::int64_t testCases) {
  if (cases == 0) return "the data have no rows";
  return testCases > 0 ? "no case with a valid target is a training case"
                       : "no case has a valid target";
}

bool PRSMultiFactory::LookAtParts() {
  try {
    const UAPartCounts counts = fParts.AskCounts(fParts.Request(PartRequest::kLook));
    if (fRun.IsStopped()) return false;
    if (counts.fNDelivered == 0) {
      fRun.AdapterMessages().NoValidCases(WhyNoCase(counts.fNCases, counts.fNTest));
      return fRun.Fail(MCNaive::kDataUnusable);
    }
    fRun.Adapter().CountDelivered(static_cast<int>(counts.fNDelivered));
    fRun.Adapter().AddLostWeights(counts.fLost);
    fNTestRecords = static_cast<int>(counts.fNTest);
    if (fRun.Specs().GetScreenStatusOn() && !fScreening.TakeCounts(*fParts.ComponentOf(counts))) {
      fParts.ThrowDamaged();
    }
  } catch (const MCHost::HostIOError& error) {
    if (fRun.IsStopped()) return false;
    fRun.AdapterMessages().ReadFailed(error.what());
    return fRun.Fail(MCNaive::kDataUnusable);
  }
  fpParts = std::make_unique<PRSMultiParts>(fRun, fScreening.Outcome());
  fRun.AdapterMessages().WeightsLost(fRun.Adapter().GetLostWeights());
  fSpecs.TakeMemoryFor(GetNTrainRecords());  // which the model's file has among its settings
  return true;
}

bool PRSMultiFactory::AnswerPart() {
  if (!fPartRequest) return false;
  if (fRun.GetStatus().IsError()) return true;
  if (fPartRequest->fKind == PartRequest::kLook) {
    AnswerLook();
  } else if (PreparePart(*fPartRequest)) {
    fPartRequest->fKind == PartRequest::kEncode ? AnswerEncode()
                                                : AnswerClassify(fPartRequest->fContent);
  }
  return true;
}

void PRSMultiFactory::AnswerLook() {
  UAPartCounts counts;
  if (fRun.Specs().GetScreenStatusOn()) {
    counts.fComponent = fScreening.CountPart(*fpTrainRecIter);
  } else {
    fRun.ReadAll(*fpTrainRecIter);
  }
  if (!fRun.IsPassComplete(*fpTrainRecIter)) return;
  counts.fNCases = fpTrainRecIter->GetNCases();
  counts.fNDelivered = fRun.Adapter().GetRecordCount();
  counts.fNTest = fpTrainRecIter->GetNTestCases();
  counts.fLost = fRun.Adapter().GetLostWeights();
  PRSAnswer(Piece::kCounts, StateBytes::Of(counts));
}

bool PRSMultiFactory::PreparePart(const PartRequest& request) {
  fScreening.TakeOutcome(request.fNumbers);
  fRun.ReadAll(*fpTrainRecIter);
  return fRun.IsPassComplete(*fpTrainRecIter) && fMetaData.Complete(true) &&
         fpTrainRecIter->NewPass();
}

void PRSMultiFactory::AnswerEncode() {
  NBPartCounts counts;
  std::unique_ptr<NBPartCodes> codes;
  if (fSpecs.GetMultiTestData()) fpTestRecIter = fRun.NewStream(PRSMultiRun::Sample::kTest);
  if (!fModel.CountPart(*fpTrainRecIter, fpTestRecIter.get(), counts, codes)) return;
  PRSAnswer(Piece::kNaiveCounts, StateBytes::Of(counts), codes->Bytes());
}

void PRSMultiFactory::AnswerClassify(const std::string& model) {
  ComponentFile restored;
  if (!ReadComponentBytes(model, restored).empty() || restored.fpNaive == nullptr) return;
  NBPartClassified classified;
  classified.fNCases = fpTrainRecIter->GetNCases();
  PRSMultiScoring scoring(fRun, *restored.fpNaive, 0);
  if (classified.fNCases > 0 && !scoring.ScoringDataPass()) return;
  scoring.GiveTo(classified);
  PRSAnswer(Piece::kClassified, StateBytes::Of(classified));
}

bool PRSMultiFactory::PreliminaryDataPass() {
  if (fRun.GetStatus().IsError()) return false;
  if (fParts.AreThere()) return fModel.OpenModelFile() && LookAtParts();
  if (!fModel.IsPartSaved() && fpTrainRecIter->GetState() == MCCommon::RecordIterator::kNoRecords) {
    fRun.AdapterMessages().NoValidCases(WhyNoCase());
    return fRun.Fail(MCNaive::kDataUnusable);
  }
  if (!fModel.OpenModelFile()) return false;
  if (fRun.Specs().GetScreenStatusOn()) {
    fScreening.ReadAll(*fpTrainRecIter);
  } else {
    fRun.ReadAll(*fpTrainRecIter);
  }
  fNTestRecords = fpTrainRecIter->GetNTestCases();
  if (!fRun.IsPassComplete(*fpTrainRecIter)) return false;
  fRun.AdapterMessages().WeightsLost(fRun.Adapter().GetLostWeights());
  fSpecs.TakeMemoryFor(GetNTrainRecords());
  return true;
}

bool PRSMultiFactory::CompleteMetaData() {
  const bool isModelKept = fParts.AreThere() || fRun.IsModelSaved() || PRSIsStateWanted() ||
                           PRSIsModelWanted() || MCHost::CurrentSession().WantsFindings();
  return !fRun.GetStatus().IsError() && fMetaData.Complete(isModelKept);
}

void PRSMultiFactory::WarnOfSimulation() const {
  const NaiveBayesSettings& settings = *fSpecs.GetNaiveSettingsPtr();
  const long nHeld = settings.GetMaxRecordsInMemory();
  if (!fRun.IsSelecting() || GetNTrainRecords() <= nHeld) return;
  MCHost::RaiseMessage(
      MCHost::OutputMessage::kWarning, "Memory of ^1 KB holds ^2 of ^3 training cases: ^4, ^5...",
      {Plain(fSpecs.GetMultiMemAllocate()), std::to_string(nHeld),
       std::to_string(GetNTrainRecords()), std::to_string(settings.GetSampleSize4SimData()),
       Plain(fSpecs.GetMemoryToHold(GetNTrainRecords()))});
}

bool PRSMultiFactory::BuildOfPart() {
  if (fModel.BuildOfPart(*fpTrainRecIter)) return true;
  if (GetNTrainRecords() > 0 || fRun.GetStatus().IsError()) return false;
  fRun.AdapterMessages().NoValidCases(WhyNoCase());
  return fRun.Fail(MCNaive::kDataUnusable);
}

bool PRSMultiFactory::BuildModel() {
  if (fpParts != nullptr) return fModel.BuildInParts(*fpParts);
  const bool hasPredictors = fMetaData.GetNUniquePreds() > 0 || fMetaData.GetNForcePreds() > 0;
  if (hasPredictors && !fpTrainRecIter->NewPass()) return fRun.IsPassComplete(*fpTrainRecIter);
  if (fModel.IsPartSaved()) return BuildOfPart();
  WarnOfSimulation();
  if (!fModel.Build(*fpTrainRecIter, fpTestRecIter.get())) return false;
  fpTrainRecIter.reset();
  fpTestRecIter.reset();
  return true;
}

bool PRSMultiFactory::Classify(PRSMultiScoring& scoring) {
  if (!scoring.IsNeeded()) return true;
  if (fpParts == nullptr) return scoring.ScoringDataPass();
  NBPartClassified classified;
  const bool isDone = fpParts->Classify(*fModel.GetINBAlgorithm(), classified);
  if (!fpParts->IsPassComplete() || !isDone) return false;
  scoring.TakeFrom(classified);
  return true;
}

bool PRSMultiFactory::RunNBComponent() {
  if (fRun.GetStatus().IsError() || (fpTrainRecIter == nullptr && fpParts == nullptr)) return false;
  if (!BuildModel()) return false;
  const PRSValidSpecs& specs = fRun.Specs();
  if (specs.GetPrintExclude() && !fMetaData.IsAnyDropped() && GetDroppedInTraining().empty()) {
    PRSMessages().NoPredsExcluded();
  }
  PRSMultiCalibration calibration(fRun, dynamic_cast<NBAlgorithm&>(*fModel.GetINBAlgorithm()));
  if (!calibration.Calibrate() || !fModel.WriteFiles()) return false;
  PRSMultiScoring scoring(fRun, *fModel.GetINBAlgorithm(), fMetaData.GetNSaveDepCats());
  if (!Classify(scoring)) return false;
  fEvaluation = scoring.FindEvaluation();
  HandOverFindings(scoring);
  const bool testLayerWanted =
      IsClassified() && specs.GetMultiTrainSamp() && !specs.GetMultiTestData();
  if (testLayerWanted && fModel.GetINBAlgorithm()->GetTestOutStats() == nullptr) {
    PRSMessages().NoValidTestCasesClassify();
  }
  return true;
}

void PRSMultiFactory::HandOverFindings(const PRSMultiScoring& scoring) const {
  MCHost::ISession& session = MCHost::CurrentSession();
  if (!session.WantsFindings()) return;
  PRSFindings findings;
  findings.fpNaive = fModel.GetINBAlgorithm();
  findings.fpTraining = scoring.GetCurves(true);
  findings.fpTest = scoring.GetCurves(false);
  findings.fpEvaluation = fEvaluation ? &*fEvaluation : nullptr;
  if (fRun.IsSelecting()) {
    findings.fpSelection = &fModel.GetSelection();
    findings.fNForced = static_cast<int>(fModel.GetForcedInputs().size());
    findings.fbByTestData = fRun.Specs().GetMultiTestData();
  }
  findings.fLeftOut = LeftOut();
  session.TakeFindings(findings);
}

std::vector<PRSLeftOut> PRSMultiFactory::LeftOut() const {
  std::vector<PRSLeftOut> leftOut;
  const auto add = [&](const std::vector<int>& variables, int reason, double threshold) {
    for (const int var : variables) {
      const KOVA_Variable& variable = fRun.Source().GetVariable(var);
      leftOut.push_back({variable.GetName(), variable.GetLabel(),
                         fRun.VarSpecs().GetKOVACatVar(var), reason, threshold});
    }
  };
  const PRSScreening& screening = fSpecs.Options().fScreening;
  const std::pair<MCFSCommon::PredictorDelReason, double> rules[] = {
      {MCFSCommon::kManyMissing, screening.fPctMissing.fValue},
      {MCFSCommon::kManyInSingleCategory, screening.fPctEqual.fValue},
      {MCFSCommon::kManyCategories, screening.fPctUnequal.fValue},
      {MCFSCommon::kManyCategoriesWithOneCase, FSSettings().GetMaxPctCatWithOneCase()},
      {MCFSCommon::kSmallStddev, screening.fStdDev.fValue},
      {MCFSCommon::kSmallVariation, screening.fCoeffVariate.fValue}};
  add(GetMissPredictors(), MCFSCommon::kAllMissing, MCMV::gMissingValue);
  add(GetConstPredictors(), MCFSCommon::kAllConstant, MCMV::gMissingValue);
  for (const MCFSCommon::PredictorDelReason same :
       {MCFSCommon::kAllMissing, MCFSCommon::kAllConstant}) {
    add(GetScreenedPredictors(same), same, MCMV::gMissingValue);
  }
  for (const auto& [reason, threshold] : rules)
    add(GetScreenedPredictors(reason), reason, threshold);
  add(GetDroppedInTraining(), PRSLeftOut::kConstantInTraining, MCMV::gMissingValue);
  return leftOut;
}
