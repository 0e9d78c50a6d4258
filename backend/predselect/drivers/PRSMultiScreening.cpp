#include "backend/predselect/drivers/PRSMultiScreening.h"

#include <memory>
#include <string>
#include <vector>

#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"
#include "feature/IFSAlgorithm.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"

namespace {

// The engine that counts for the rules: every column of the record but the weight is a predictor of
// a pass without a target. Of its statuses want of memory alone is looked at: a pass that was cut
// short is seen by the run itself.
struct Rules {
  explicit Rules(const PRSMultiRun& run) {
    const UAVarValidSpecs& record = run.VarSpecs();
    const int weight = run.Specs().GetKOVAWeightVar();
    const int weightPosition = weight < 0 ? -1 : record.GetRecVarIndex(weight);
    std::vector<bool> categorical;
    for (int column = 0; column < record.GetNRecordVars(); ++column) {
      if (column == weightPosition) continue;
      fColumns.push_back(column);
      categorical.push_back(record.IsCategorical(column));
    }
    fSettings = FSSettings(categorical, true);
    fSettings.SetWeightPosition(weightPosition);
    fSettings.SetTargetPosition(-1);
    run.Specs().SetThresholds(fSettings);
    fSettings.SetCancelPointer(run.Specs().GetStopProcessorPtr());
    fSettings.SetProgressListener(&fProgress);
    fSettings.SetNSkippedRecordReports(PRSProgress::kRecords - 1);
    fSettings.SetNThreads(MCHost::CurrentSession().Threads());
    FSFactory factory;
    fpEngine = factory.CreateFSAlgorithm(&fSettings);
    FSThrowWantOfMemory(factory.GetStatus());
  }

  std::vector<int> fColumns;
  PRSProgress fProgress;
  FSSettings fSettings;
  std::unique_ptr<IFSAlgorithm> fpEngine;
};

}  // namespace

void PRSMultiScreening::ReadAll(NaiveDataSourceIter& train) {
  const Rules rules(fRun);
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  FSThrowWantOfMemory(rules.fpEngine->CheckPredictorsNoTarget(train, indices, reasons, -1));
  Enter(rules.fColumns, indices, reasons);
}

std::string PRSMultiScreening::CountPart(NaiveDataSourceIter& train) {
  const Rules rules(fRun);
  FSThrowWantOfMemory(rules.fpEngine->Accumulate(train, -1));
  return ComponentBytes(*rules.fpEngine, nullptr);
}

bool PRSMultiScreening::TakeCounts(const IFSAlgorithm& counts) {
  const Rules rules(fRun);
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  const auto status = rules.fpEngine->Merge(counts, nullptr);
  if (status.GetErrorCode() == MCFeature::kCannotMerge) return false;
  FSThrowWantOfMemory(status);
  FSThrowWantOfMemory(rules.fpEngine->ScreenWithoutTarget(indices, reasons));
  Enter(rules.fColumns, indices, reasons);
  return true;
}

std::vector<int> PRSMultiScreening::Outcome() const {
  std::vector<int> outcome;
  for (const auto& [var, reason] : fReasons) {
    outcome.insert(outcome.end(), {var, static_cast<int>(reason)});
  }
  return outcome;
}

void PRSMultiScreening::TakeOutcome(const std::vector<int>& outcome) {
  for (std::size_t i = 0; i + 1 < outcome.size(); i += 2) {
    fReasons[outcome[i]] = static_cast<MCFSCommon::PredictorDelReason>(outcome[i + 1]);
  }
}

void PRSMultiScreening::Enter(const std::vector<int>& columns, const std::vector<int>& indices,
                              const std::vector<std::vector<int>>& reasons) {
  for (std::size_t i = 0; i < indices.size(); ++i) {
    Enter(columns[static_cast<std::size_t>(indices[i])], reasons[i]);
  }
}

// Whether the variable has two different values somewhere in the table.
bool PRSMultiScreening::IsUsable(int record) const {
  const UAInputAdapter& adapter = fRun.Adapter();
  const int var = fRun.VarSpecs().GetKOVAVarIndex(record);
  if (fRun.VarSpecs().IsCategorical(record)) return adapter.GetCatVarSize(var) > 1;
  return adapter.GetContMinValue(var) != adapter.GetContMaxValue(var);
}

void PRSMultiScreening::Enter(int record, const std::vector<int>& reasons) {
  const int var = fRun.VarSpecs().GetKOVAVarIndex(record);
  if (var == fRun.Specs().GetDependVar() || !IsUsable(record)) return;
  for (const int reason : reasons) {
    if (reason == MCFSCommon::kAllMissing || reason == MCFSCommon::kAllConstant) continue;
    fReasons[var] = static_cast<MCFSCommon::PredictorDelReason>(reason);
    return;
  }
}

MCFSCommon::PredictorDelReason PRSMultiScreening::ReasonOf(int var) const {
  const auto found = fReasons.find(var);
  return found == fReasons.end() ? MCFSCommon::kNotDeleted : found->second;
}

std::vector<int> PRSMultiScreening::LeftOutFor(MCFSCommon::PredictorDelReason reason) const {
  std::vector<int> variables;
  for (const auto& [var, why] : fReasons) {
    if (why == reason) variables.push_back(var);
  }
  return variables;
}
