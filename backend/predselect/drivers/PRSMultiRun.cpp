#include "backend/predselect/drivers/PRSMultiRun.h"

#include <algorithm>

#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "common/MCAssert.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpError.h"
#include "host/output/pivot/BpComposite.h"
#include "naivebayes/NaiveBayesSettings.h"

namespace {

constexpr int kShow = 2;
constexpr int kWarning = 2;
constexpr int kError = 3;

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

const char* TextOf(const MCNaive::MCStatus& status) {
  for (const StatusText& entry : kStatusTexts) {
    if (entry.fCode == status.GetErrorCode()) return entry.fText;
  }
  return status.IsError() ? "Naive Bayes run failed, status ^1..." : nullptr;
}

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

std::unique_ptr<NaiveDataSourceIter> PRSMultiRun::NewStream(bool needTrainData, bool needTestData) {
  return std::make_unique<NaiveDataSourceIter>(fAdapter, &fSpecs, fTrainTestFlags, needTrainData,
                                               needTestData);
}

KOVA_Value PRSMultiRun::Decode(int var, int code) const {
  int decodedVar = -1;
  KOVA_Value value = fAdapter.DecodeCatValue(VarSpecs().GetRecVarIndex(var), code, decodedVar);
  MCCommon::Assert(decodedVar == var, "depVarInd == kovaX", kSource);
  return value;
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

// The place or the variable that a status is about, else its code.
std::string PRSMultiRun::NameIn(const MCNaive::MCStatus& status) const {
  const int var = VarSpecs().GetKOVAVarIndex(static_cast<int>(status.GetDiscreteDatum(0)));
  const bool namesVariable = status.GetErrorCode() == MCNaive::kPredictorDropped ||
                             status.GetErrorCode() == MCNaive::kTextNotForXML;
  if (namesVariable && var >= 0) return fSource.GetVariable(var).GetName();
  if (status.GetErrorCode() == MCNaive::kTemporaryFile) {
    return fSpecs.GetNaiveSettingsPtr()->GetTempDir();
  }
  return std::to_string(status.GetErrorCode());
}

void PRSMultiRun::DisplayMessage(const MCNaive::MCStatus& status) const {
  const char* text = status.IsOK() ? nullptr : TextOf(status);
  if (text == nullptr) return;
  const bool isTest = status.GetErrorCode() == MCNaive::kNoTestRecords;
  if (isTest && !fSpecs.GetMultiTrainSamp()) return;
  // A maximum may well be more than there are.
  const bool isReduced = status.GetErrorCode() == MCNaive::kSizeReduced;
  if (isReduced && fSpecs.GetMultiExactSize() < 1) return;
  BpComposite composite(text);
  composite.AddLiteral(NameIn(status));
  BpError(composite, kShow, status.IsError() ? kError : kWarning);
}
