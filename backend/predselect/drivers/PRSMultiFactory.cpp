#include "backend/predselect/drivers/PRSMultiFactory.h"

#include "backend/predselect/command/PRSMessages.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSMultiScoring.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "naivebayes/INBAlgorithm.h"

PRSMultiFactory::PRSMultiFactory(PRSValidSpecs* specs, ProcedureDataSource& source)
    : fRun(*specs, source), fScreening(fRun), fMetaData(fRun, fScreening), fModel(fRun, fMetaData) {
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
  return fRun.IsPassComplete(*fpTrainRecIter);
}

bool PRSMultiFactory::CompleteMetaData() {
  return !fRun.GetStatus().IsError() &&
         fMetaData.Complete(fRun.IsModelSaved() || PRSIsStateWanted());
}

bool PRSMultiFactory::RunNBComponent() {
  if (fRun.GetStatus().IsError() || fpTrainRecIter == nullptr) return false;
  const bool hasPredictors = fMetaData.GetNUniquePreds() > 0 || fMetaData.GetNForcePreds() > 0;
  if (hasPredictors && !fpTrainRecIter->NewPass()) return fRun.IsPassComplete(*fpTrainRecIter);
  if (!fModel.Build(*fpTrainRecIter, fpTestRecIter.get())) return false;
  fpTrainRecIter.reset();
  fpTestRecIter.reset();
  if (!fModel.WriteFiles()) return false;
  PRSMultiScoring scoring(fRun, *fModel.GetINBAlgorithm(), fMetaData.GetNSaveDepCats());
  if (scoring.IsNeeded() && !scoring.ScoringDataPass()) return false;
  const PRSValidSpecs& specs = fRun.Specs();
  const bool testLayerWanted =
      IsClassified() && specs.GetMultiTrainSamp() && !specs.GetMultiTestData();
  if (testLayerWanted && fModel.GetINBAlgorithm()->GetTestOutStats() == nullptr) {
    PRSMessages().NoValidTestCasesClassify();
  }
  return true;
}
