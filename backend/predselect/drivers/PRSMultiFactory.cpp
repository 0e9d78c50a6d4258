#include "backend/predselect/drivers/PRSMultiFactory.h"

#include <algorithm>

#include "backend/predselect/command/PRSGrammar.h"
#include "backend/predselect/drivers/NaiveDataSourceIter.h"
#include "backend/predselect/drivers/PRSFiles.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/session/OutputFile.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/variables/NBVarList.h"

namespace {

constexpr const char* kSource = "backend/predselect/PRSMultiFactory";
constexpr int kDataUnusable = 70000;
constexpr double kMostTableBytes = 4.0 * (1 << 30);

std::vector<int> VariablesBesideTheRecord(const PRSValidSpecs& specs) {
  std::vector<int> variables{specs.GetDependVar()};
  if (specs.GetMultiTrainSampVar() >= 0) variables.push_back(specs.GetMultiTrainSampVar());
  return variables;
}

}  // namespace

PRSMultiFactory::PRSMultiFactory(PRSValidSpecs* specs, ProcedureDataSource& source)
    : fpSpecs(specs),
      fpVarSpecs(specs->GetVarValidSpecsPtr()),
      fpSource(&source),
      fbSaveModel(!specs->GetModelFileName().empty()),
      fbKeepValues(fbSaveModel || PRSIsStateWanted()),
      fbRunSelection(!specs->GetMultiNoSelection()),
      fpAdapter(
          std::make_unique<UAInputAdapter>(fpVarSpecs, source, VariablesBesideTheRecord(*specs))),
      fAdapterMessages(source) {
  fParserMessages.SetCommandName(PRSGrammar::kNaiveBayes);
  fParserMessages.SetProcedureTitle("NaiveBayes");
  fpTrainRecIter =
      std::make_unique<NaiveDataSourceIter>(*fpAdapter, specs, fTrainTestFlags, true, false);
  fpTrainRecIter->Start();
  if (fpTrainRecIter->GetFailReason() == MCCommon::RecordIterator::kNoRecords) {
    (void)Fail(kDataUnusable);
    fAdapterMessages.NoValidCases();
  }
  if (fStatus.IsError() || !specs->GetMultiTestData()) return;
  fpTestRecIter =
      std::make_unique<NaiveDataSourceIter>(*fpAdapter, specs, fTrainTestFlags, false, true);
}

PRSMultiFactory::~PRSMultiFactory() = default;

bool PRSMultiFactory::Fail(int code) {
  fStatus = {code, false};
  return false;
}

int PRSMultiFactory::GetNTrainRecords() const { return fpAdapter->GetRecordCount(); }

bool PRSMultiFactory::PreliminaryDataPass() {
  if (fStatus.IsError()) return false;
  if (fpTrainRecIter->GetState() == MCCommon::RecordIterator::kNoRecords) {
    fAdapterMessages.NoValidCases();
    return Fail(kDataUnusable);
  }
  MCStopProcessor& stop = *fpSpecs->GetStopProcessorPtr();
  while (fpTrainRecIter->HasMore() && !stop.IsCancel()) {
    (void)fpTrainRecIter->NextBlock(MCCommon::RecordBlock::kMaxCases);
    fNCasesRead = fpAdapter->GetCaseNumber();
    PRSProgress::Show("Reading the data", fNCasesRead);
  }
  fNTestRecords = fpTrainRecIter->GetNTestCases();
  return IsPassComplete(*fpTrainRecIter);
}

bool PRSMultiFactory::IsPassComplete(const UAProcDataSourceIter& stream) {
  if (stream.GetFailReason() == MCCommon::RecordIterator::kReadError) {
    fAdapterMessages.ReadFailed(stream.GetFailText());
    return Fail(kDataUnusable);
  }
  return !IsStopped();
}

bool PRSMultiFactory::IsStopped() {
  const MCStopProcessor& stop = *fpSpecs->GetStopProcessorPtr();
  if (stop.GetCause() == MCStopProcessor::kRunning) return false;
  fAdapterMessages.Stopped(stop, std::max(fNCasesRead, fpAdapter->GetCaseNumber()));
  (void)Fail(MCNaive::kCancelled);
  return true;
}

bool PRSMultiFactory::CompleteMetaData() {
  if (fStatus.IsError()) return false;
  fpNBVarList = std::make_unique<NBVarList>();
  const int target = fpSpecs->GetDependVar();
  MCCommon::Assert(target >= 0, "dependVar >= 0", kSource);
  fpAdapter->ReorderCategories(target, true);
  if (!SetNBVariable(target, true, false, false)) return false;
  if (fpSpecs->GetKOVAWeightVar() >= 0) {
    const KOVA_Variable& weight = fpSource->GetVariable(fpSpecs->GetKOVAWeightVar());
    (void)fpNBVarList->AddWeightVar(weight.GetName(), weight.GetLabel(), INBVariable::kRound);
  }
  const bool isComplete =
      FitsIntoMemory() &&
      SetPredictors(fpSpecs->GetPredListPtr(), fpSpecs->GetPredCatVarListPtr(), false) &&
      SetPredictors(fpSpecs->GetForcePredListPtr(), fpSpecs->GetForceCatVarListPtr(), true) &&
      CheckCounts();
  if (!isComplete) return false;
  const bool noneDropped = fMissPredictors.empty() && fConstPredictors.empty();
  if (noneDropped && fpSpecs->GetPrintExclude()) fMessages.NoPredsExcluded();
  return true;
}

// A predictor's table holds a count and a probability for each of its categories (or bins) and each
// of the target's. Columns of names or numbers of cases have so many that the machine would give
// up.
bool PRSMultiFactory::FitsIntoMemory() const {
  const int nTargets = fpAdapter->GetCatVarSize(fpSpecs->GetDependVar());
  double nRows = 0.0;
  int largest = -1;
  int nLargest = 0;
  const auto add = [&](const std::vector<int>* variables, const std::vector<bool>* categorical) {
    for (std::size_t i = 0; variables != nullptr && i < variables->size(); ++i) {
      const int var = (*variables)[i];
      const int rows = (*categorical)[i] ? fpAdapter->GetCatVarSize(var) : fpSpecs->GetMultiBins();
      nRows += rows;
      if (rows > nLargest) largest = var;
      nLargest = std::max(nLargest, rows);
    }
  };
  add(fpSpecs->GetPredListPtr(), fpSpecs->GetPredCatVarListPtr());
  add(fpSpecs->GetForcePredListPtr(), fpSpecs->GetForceCatVarListPtr());
  const int nCases = fpAdapter->GetRecordCount();
  const bool areHeld =
      fbRunSelection && nCases <= fpSpecs->GetNaiveSettingsPtr()->GetMaxRecordsInMemory();
  const double nNumbers = 2.0 * nRows + (areHeld ? nCases : 0);
  if (nLargest == 0 || nNumbers * nTargets * sizeof(double) <= kMostTableBytes) return true;
  fMessages.GenericError("Too many categories for the model: ^1, ^2, ^3...",
                         fpSource->GetVariable(largest).GetName().c_str(),
                         std::to_string(nLargest).c_str(), std::to_string(nTargets).c_str());
  return false;
}

// A candidate that cannot be used is left out; a forced predictor that cannot ends the run.
bool PRSMultiFactory::SetPredictors(const std::vector<int>* variables,
                                    const std::vector<bool>* categorical, bool forced) {
  if (variables == nullptr || categorical == nullptr) return true;
  int& nAccepted = forced ? fNForcePreds : fNUniquePreds;
  for (std::size_t i = 0; i < variables->size(); ++i) {
    const bool isCategorical = (*categorical)[i];
    if (isCategorical) fpAdapter->ReorderCategories((*variables)[i], true);
    const bool isAccepted = SetNBVariable((*variables)[i], isCategorical, true, forced);
    if (!isAccepted && forced) return false;
    nAccepted += isAccepted ? 1 : 0;
  }
  return true;
}

bool PRSMultiFactory::CheckCounts() {
  const bool forcedRun = fbRunSelection && fNForcePreds > 0;
  if (!forcedRun && fNUniquePreds == 0 && (fbRunSelection || fNForcePreds < 1)) {
    fMessages.AllPredsMissOrConst();
    return false;
  }
  if (forcedRun && fNUniquePreds <= 0) {
    fMessages.AllPossiblePredsExcluded();
    return false;
  }
  const int maxSize = fpSpecs->GetMultiMaxSize();
  const bool fits = maxSize == 0 ? fNUniquePreds > 0 : maxSize <= fNUniquePreds;
  if (!fits) {
    fMessages.TooFewPossPredsMaxSize();
    return false;
  }
  const int exactSize = fpSpecs->GetMultiExactSize();
  if (exactSize >= 1 && fNUniquePreds <= exactSize) {
    fMessages.TooFewPossPredsExactSize();
    return false;
  }
  return true;
}

bool PRSMultiFactory::SetNBVariable(VarIndex var, bool categorical, bool input, bool forced) {
  const bool isKept = forced || !fbRunSelection;
  const INBVariable::VariableRole role = !input   ? INBVariable::kOutput
                                         : isKept ? INBVariable::kInput
                                                  : INBVariable::kPossibleInput;
  const KOVA_Variable& variable = fpSource->GetVariable(var);
  const bool isAccepted =
      categorical ? SetCategorical(variable, var, input, role) : SetContinuous(variable, var, role);
  const int index = fpVarSpecs->GetRecVarIndex(var);
  MCCommon::Assert(index == fpNBVarList->Size() - 1, "index == fpNBVarList->Size() - 1", kSource);
  if (fbKeepValues) SetNBMissingValues(variable, index);
  if (forced && !isAccepted) fMessages.SomeForcePredsExcluded();
  return isAccepted;
}

bool PRSMultiFactory::SetContinuous(const KOVA_Variable& variable, VarIndex var,
                                    INBVariable::VariableRole role) {
  const double low = fpAdapter->GetContMinValue(var);
  const double high = fpAdapter->GetContMaxValue(var);
  const bool isUsable = low != high;
  MCCommon::Assert(!isUsable || low < high, "minimum < maximum", kSource);
  if (!isUsable) (MCMV::IsMissing(low) ? fMissPredictors : fConstPredictors).push_back(var);
  (void)fpNBVarList->AddContVar(variable.GetName(), variable.GetLabel(), low, high,
                                fpSpecs->GetMultiBins(), isUsable ? role : INBVariable::kUnused);
  return isUsable;
}

bool PRSMultiFactory::SetCategorical(const KOVA_Variable& variable, VarIndex var, bool input,
                                     INBVariable::VariableRole role) {
  const int nCats = fpAdapter->GetCatVarSize(var);
  const bool isUsable = nCats > 1;
  if (!isUsable && input) (nCats == 1 ? fConstPredictors : fMissPredictors).push_back(var);
  if (!isUsable && !input) TargetUnusable(nCats);
  if (isUsable && !input && !fpSpecs->GetPredProbRootName().IsEmpty()) {
    fNSaveDepCats = std::min(nCats, fpSpecs->GetPredProbNumber());
    MCCommon::Assert(fNSaveDepCats > 0, "fNSaveDepCats > 0", kSource);
  }
  AddCategories(variable, var, nCats, isUsable ? role : INBVariable::kUnused);
  return isUsable;
}

void PRSMultiFactory::TargetUnusable(int nCats) {
  if (nCats == 1) {
    (void)Fail(kDataUnusable);
    fMessages.DependVarConst();
  } else {
    (void)Fail(MCNaive::kNoRecordsFound);
    DisplayMessage(fStatus);
  }
}

void PRSMultiFactory::AddCategories(const KOVA_Variable& variable, VarIndex var, int nCats,
                                    INBVariable::VariableRole role) {
  const std::string& name = variable.GetName();
  const std::string& label = variable.GetLabel();
  if (!fbKeepValues) {
    const auto level =
        variable.IsNumeric() ? INBVariable::kNumericCategorical : INBVariable::kStringCategorical;
    (void)fpNBVarList->AddCatVar(name, label, nCats, level, role);
    return;
  }
  std::vector<double> numbers;
  std::vector<std::string> strings;
  std::vector<std::string> labels;
  for (int code = 0; code < nCats; ++code) {
    const KOVA_Value value = Decode(var, code);
    const std::string* found = nullptr;
    if (variable.IsNumeric()) {
      numbers.push_back(value.GetNumber());
      found = variable.GetValueLabels().FindLabel(value.GetNumber());
    } else {
      strings.push_back(UAVarValidSpecs::ConvertObsToString(value, variable));
      found = variable.GetValueLabels().FindLabel(value.GetString());
    }
    labels.push_back(found == nullptr ? "" : *found);
  }
  (void)(variable.IsNumeric() ? fpNBVarList->AddCatVar(name, label, numbers, labels, role)
                              : fpNBVarList->AddCatVar(name, label, strings, labels, role));
}

// User-missing values that are included are values like any other.
void PRSMultiFactory::SetNBMissingValues(const KOVA_Variable& variable, int index) {
  if (!fpSpecs->IsMissingExclude()) return;
  const KOVA_MissingValues& missing = variable.GetMissingValues();
  const auto labelOf = [&variable](const auto& value) {
    const std::string* label = variable.GetValueLabels().FindLabel(value);
    return label == nullptr ? std::string() : *label;
  };
  if (!variable.IsNumeric()) {
    for (const std::string& value : missing.GetStrings()) {
      fpNBVarList->AddDiscreteUserMissing(index, value, labelOf(value));
    }
    return;
  }
  for (const double value : missing.GetNumbers()) {
    fpNBVarList->AddDiscreteUserMissing(index, value, labelOf(value));
  }
  if (missing.HasRange()) {
    fpNBVarList->SetMissingInterval(index, missing.GetLow(), missing.GetHigh());
  }
}

KOVA_Value PRSMultiFactory::Decode(VarIndex var, int code) const {
  int decodedVar = -1;
  KOVA_Value value = fpAdapter->DecodeCatValue(fpVarSpecs->GetRecVarIndex(var), code, decodedVar);
  MCCommon::Assert(decodedVar == var, "depVarInd == kovaX", kSource);
  return value;
}
