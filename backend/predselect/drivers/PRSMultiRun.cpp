#include "backend/predselect/drivers/PRSMultiRun.h"

#include <algorithm>
#include <new>

#include "backend/predselect/command/PRSMessages.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "common/MCAssert.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/StatusMessages.h"

namespace {

std::vector<int> VariablesBesideTheRecord(const PRSValidSpecs& specs) {
  std::vector<int> variables{specs.GetDependVar()};
  if (specs.GetMultiTrainSampVar() >= 0) variables.push_back(specs.GetMultiTrainSampVar());
  return variables;
}

}  // namespace

PRSMultiRun::PRSMultiRun(const PRSValidSpecs& specs, ProcedureDataSource& source)
    : fSpecs(specs),
      fSource(source),
      fAdapter(specs.GetVarValidSpecsPtr(), source, VariablesBesideTheRecord(specs)),
      fAdapterMessages(source) {}

bool PRSMultiRun::IsClassified() const {
  return fSpecs.GetPrintClassify() &&
         fAdapter.GetCatVarSize(fSpecs.GetDependVar()) <= kMostClassified;
}

std::unique_ptr<NaiveDataSourceIter> PRSMultiRun::NewStream(Sample sample) {
  return std::make_unique<NaiveDataSourceIter>(
      fAdapter, &fSpecs, fTrainTestFlags, sample != Sample::kTest, sample != Sample::kTraining);
}

KOVA_Value PRSMultiRun::Decode(int var, int code) const {
  int decodedVar = -1;
  KOVA_Value value = fAdapter.DecodeCatValue(VarSpecs().GetRecVarIndex(var), code, decodedVar);
  MCCommon::Assert(decodedVar == var, "depVarInd == kovaX", kSource);
  return value;
}

void PRSMultiRun::SetStatus(const MCNaive::MCStatus& status) {
  if (status.GetErrorCode() == MCNaive::kNoMemory) throw std::bad_alloc();
  fStatus = status;
}

bool PRSMultiRun::Fail(std::int64_t code) {
  fStatus = {code, false};
  return false;
}

void PRSMultiRun::ReadAll(NaiveDataSourceIter& stream) {
  MCStopProcessor& stop = *fSpecs.GetStopProcessorPtr();
  while (stream.HasMore() && !stop.IsCancel()) {
    stream.SkipBlock();
    fNCasesRead = fAdapter.GetCaseNumber();
    PRSProgress::Show("Reading the data", fNCasesRead);
  }
}

bool PRSMultiRun::IsPassComplete(const UAProcDataSourceIter& stream) {
  if (stream.GetFailReason() == MCCommon::RecordIterator::kReadError) {
    fAdapterMessages.ReadFailed(stream.GetFailText());
    return Fail(MCNaive::kDataUnusable);
  }
  return !IsStopped();
}

bool PRSMultiRun::IsStopped() {
  const MCStopProcessor& stop = *fSpecs.GetStopProcessorPtr();
  if (stop.GetCause() == MCStopProcessor::kRunning) return false;
  fAdapterMessages.Stopped(stop, std::max(fNCasesRead, fAdapter.GetCaseNumber()));
  (void)Fail(MCNaive::kCancelled);
  return true;
}

// What fills the message of a status.
std::string PRSMultiRun::ArgumentOf(const MCCommon::StatusMessage& message,
                                    const MCNaive::MCStatus& status) const {
  const int var = VarSpecs().GetKOVAVarIndex(static_cast<int>(status.GetDiscreteDatum(0)));
  if (message.fArgument == MCCommon::StatusMessage::kTempFolder) {
    return fSpecs.GetNaiveSettingsPtr()->GetTempDir();
  }
  const bool isVariable = message.fArgument == MCCommon::StatusMessage::kVariable && var >= 0;
  return isVariable ? fSource.GetVariable(var).GetName() : std::to_string(status.GetErrorCode());
}

void PRSMultiRun::DisplayMessage(const MCNaive::MCStatus& status) const {
  const bool isTest = status.GetErrorCode() == MCNaive::kNoTestRecords;
  if (isTest && !fSpecs.GetMultiTrainSamp()) return;
  // A maximum may well be more than there are.
  const bool isReduced = status.GetErrorCode() == MCNaive::kSizeReduced;
  if (isReduced && fSpecs.GetMultiExactSize() < 1) return;
  const MCCommon::StatusMessage* message = MCNaive::MessageOf(status);
  if (message == nullptr) return;
  PRSMessages().EngineStatus(status, message, ArgumentOf(*message, status));
}
