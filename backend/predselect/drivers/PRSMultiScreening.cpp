#include "backend/predselect/drivers/PRSMultiScreening.h"

#include <memory>

#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

void PRSMultiScreening::ReadAll(NaiveDataSourceIter& train) {
  // Every column of the record but the weight is a predictor of a pass without a target.
  const UAVarValidSpecs& record = fRun.VarSpecs();
  const int weight = fRun.Specs().GetKOVAWeightVar();
  const int weightPosition = weight < 0 ? -1 : record.GetRecVarIndex(weight);
  std::vector<int> columns;
  std::vector<bool> categorical;
  for (int column = 0; column < record.GetNRecordVars(); ++column) {
    if (column == weightPosition) continue;
    columns.push_back(column);
    categorical.push_back(record.IsCategorical(column));
  }
  PRSProgress progress;
  FSSettings settings(categorical, true);
  settings.SetWeightPosition(weightPosition);
  fRun.Specs().SetThresholds(settings);
  settings.SetCancelPointer(fRun.Specs().GetStopProcessorPtr());
  settings.SetProgressListener(&progress);
  settings.SetNSkippedRecordReports(PRSProgress::kRecords - 1);
  settings.SetNThreads(MCHost::CurrentSession().Threads());
  FSFactory factory;
  const std::unique_ptr<IFSAlgorithm> rules = factory.CreateFSAlgorithm(&settings);
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  // Its status says nothing new: a pass that was cut short is seen by the run itself.
  (void)rules->CheckPredictorsNoTarget(train, indices, reasons, -1);
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
