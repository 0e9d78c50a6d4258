#include "backend/predselect/drivers/PRSMultiFactory.h"

#include <cstdio>
#include <string>

#include "backend/predselect/command/PRSMessages.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSMultiCalibration.h"
#include "backend/predselect/drivers/PRSMultiScoring.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSSettings.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpError.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NaiveBayesSettings.h"

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
      fModel(fRun, fMetaData) {
  fpTrainRecIter = fRun.NewStream(PRSMultiRun::Sample::kTraining);
  fpTrainRecIter->Start();
  if (fpTrainRecIter->GetFailReason() == MCCommon::RecordIterator::kNoRecords) {
    (void)fRun.Fail(MCNaive::kDataUnusable);
    fRun.AdapterMessages().NoValidCases(WhyNoCase());
  }
  if (fRun.GetStatus().IsError() || !specs->GetMultiTestData()) return;
  fpTestRecIter = fRun.NewStream(PRSMultiRun::Sample::kTest);
}

PRSMultiFactory::~PRSMultiFactory() = default;

const char* PRSMultiFactory::WhyNoCase() const {
  if (fpTrainRecIter->GetNCases() == 0) return "the data have no rows";
  return fpTrainRecIter->GetNTestCases() > 0 ? "no case with a valid target is a training case"
                                             : "no case has a valid target";
}

bool PRSMultiFactory::PreliminaryDataPass() {
  if (fRun.GetStatus().IsError()) return false;
  if (fpTrainRecIter->GetState() == MCCommon::RecordIterator::kNoRecords) {
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
  const bool isModelKept = fRun.IsModelSaved() || PRSIsStateWanted() || PRSIsModelWanted() ||
                           MCHost::CurrentSession().WantsFindings();
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

bool PRSMultiFactory::RunNBComponent() {
  if (fRun.GetStatus().IsError() || fpTrainRecIter == nullptr) return false;
  const bool hasPredictors = fMetaData.GetNUniquePreds() > 0 || fMetaData.GetNForcePreds() > 0;
  if (hasPredictors && !fpTrainRecIter->NewPass()) return fRun.IsPassComplete(*fpTrainRecIter);
  const PRSValidSpecs& specs = fRun.Specs();
  WarnOfSimulation();
  if (!fModel.Build(*fpTrainRecIter, fpTestRecIter.get())) return false;
  fpTrainRecIter.reset();
  fpTestRecIter.reset();
  if (specs.GetPrintExclude() && !fMetaData.IsAnyDropped() && GetDroppedInTraining().empty()) {
    PRSMessages().NoPredsExcluded();
  }
  PRSMultiCalibration calibration(fRun, dynamic_cast<NBAlgorithm&>(*fModel.GetINBAlgorithm()));
  if (!calibration.Calibrate() || !fModel.WriteFiles()) return false;
  PRSMultiScoring scoring(fRun, *fModel.GetINBAlgorithm(), fMetaData.GetNSaveDepCats());
  if (scoring.IsNeeded() && !scoring.ScoringDataPass()) return false;
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
