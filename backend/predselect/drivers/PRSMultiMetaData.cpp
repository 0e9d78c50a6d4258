#include "backend/predselect/drivers/PRSMultiMetaData.h"

#include <algorithm>

#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSMultiScreening.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/cases/UAInputAdapter.h"
#include "host/cases/UAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/BpError.h"

namespace {

constexpr const char* kSource = PRSMultiRun::kSource;
constexpr double kMostTableBytes = 4.0 * (1 << 30);

}  // namespace

PRSMultiMetaData::PRSMultiMetaData(PRSMultiRun& run, const PRSMultiScreening& screening)
    : fRun(run),
      fScreening(screening),
      fSpecs(run.Specs()),
      fSource(run.Source()),
      fAdapter(run.Adapter()) {}

bool PRSMultiMetaData::Complete(bool keepValues) {
  fbKeepValues = keepValues;
  const int target = fSpecs.GetDependVar();
  MCCommon::Assert(target >= 0, "dependVar >= 0", kSource);
  fAdapter.ReorderCategories(target, true);
  if (!SetNBVariable(target, true, false, false)) return false;
  if (fSpecs.GetKOVAWeightVar() >= 0) {
    const KOVA_Variable& weight = fSource.GetVariable(fSpecs.GetKOVAWeightVar());
    (void)fVarList.AddWeightVar(weight.GetName(), weight.GetLabel(), INBVariable::kRound);
  }
  return CheckForced() && FitsIntoMemory() &&
         SetPredictors(fSpecs.GetPredListPtr(), fSpecs.GetPredCatVarListPtr(), false) &&
         SetPredictors(fSpecs.GetForcePredListPtr(), fSpecs.GetForceCatVarListPtr(), true) &&
         CheckCounts();
}

bool PRSMultiMetaData::IsAnyDropped() const {
  return !fMissPredictors.empty() || !fConstPredictors.empty() || fScreening.IsAnyLeftOut();
}

// A predictor's table holds a count and a probability for each of its categories (or bins) and each
// of the target's; bins have limits besides, in every copy of the list, and codes to find them by.
// Columns of names or numbers of cases have so many categories that the machine would give up.
bool PRSMultiMetaData::FitsIntoMemory() const {
  constexpr double kNumbersPerBin = 16.0;
  const int nTargets = fAdapter.GetCatVarSize(fSpecs.GetDependVar());
  double nNumbers = 0.0;
  int largest = -1;
  int nLargest = 0;
  const auto add = [&](const std::vector<int>* variables, const std::vector<bool>* categorical) {
    for (std::size_t i = 0; variables != nullptr && i < variables->size(); ++i) {
      const int var = (*variables)[i];
      if (IsScreenedOut(var)) continue;
      const bool isBinned = !(*categorical)[i];
      const int rows = isBinned ? fSpecs.GetMultiBins() : fAdapter.GetCatVarSize(var);
      nNumbers += rows * (2.0 * nTargets + (isBinned ? kNumbersPerBin : 0.0));
      if (rows > nLargest) largest = var;
      nLargest = std::max(nLargest, rows);
    }
  };
  add(fSpecs.GetPredListPtr(), fSpecs.GetPredCatVarListPtr());
  add(fSpecs.GetForcePredListPtr(), fSpecs.GetForceCatVarListPtr());
  if (nLargest == 0 || nNumbers * sizeof(double) <= kMostTableBytes) return true;
  MCHost::RaiseMessage(
      MCHost::OutputMessage::kError, "Too many categories for the model: ^1, ^2, ^3...",
      {fSource.GetVariable(largest).GetName(), std::to_string(nLargest), std::to_string(nTargets)});
  return false;
}

bool PRSMultiMetaData::IsScreenedOut(VarIndex var) const {
  return fScreening.ReasonOf(var) != MCFSCommon::kNotDeleted;
}

// What the command both forces and screens out, it must decide.
bool PRSMultiMetaData::CheckForced() const {
  std::string names;
  int nScreened = 0;
  if (fSpecs.GetForcePredListPtr() == nullptr) return true;
  for (const int var : *fSpecs.GetForcePredListPtr()) {
    if (!IsScreenedOut(var)) continue;
    names += (nScreened++ == 0 ? "" : ", ") + fSource.GetVariable(var).GetName();
  }
  if (nScreened == 0) return true;
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, "Forced predictors screened out: ^1, ^2...",
                       {names, std::to_string(nScreened)});
  return false;
}

// A candidate that cannot be used is left out; a forced predictor that cannot ends the run.
bool PRSMultiMetaData::SetPredictors(const std::vector<int>* variables,
                                     const std::vector<bool>* categorical, bool forced) {
  if (variables == nullptr || categorical == nullptr) return true;
  int& nAccepted = forced ? fNForcePreds : fNUniquePreds;
  for (std::size_t i = 0; i < variables->size(); ++i) {
    const bool isCategorical = (*categorical)[i];
    if (isCategorical) fAdapter.ReorderCategories((*variables)[i], true);
    const bool isAccepted = SetNBVariable((*variables)[i], isCategorical, true, forced);
    if (!isAccepted && forced) return false;
    nAccepted += isAccepted ? 1 : 0;
  }
  return true;
}

bool PRSMultiMetaData::CheckCounts() const {
  const bool forcedRun = fRun.IsSelecting() && fNForcePreds > 0;
  if (!forcedRun && fNUniquePreds == 0 && (fRun.IsSelecting() || fNForcePreds < 1)) {
    NoneLeft();
    return false;
  }
  if (forcedRun && fNUniquePreds <= 0) {
    fMessages.AllPossiblePredsExcluded();
    return false;
  }
  const int maxSize = fSpecs.GetMultiMaxSize();
  const bool fits = maxSize == 0 ? fNUniquePreds > 0 : maxSize <= fNUniquePreds;
  if (!fits) {
    fMessages.TooFewPossPredsMaxSize();
    return false;
  }
  const int exactSize = fSpecs.GetMultiExactSize();
  if (exactSize >= 1 && fNUniquePreds <= exactSize) {
    fMessages.TooFewPossPredsExactSize();
    return false;
  }
  return true;
}

void PRSMultiMetaData::NoneLeft() const {
  if (!fScreening.IsAnyLeftOut()) return fMessages.AllPredsMissOrConst();
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, "All predictors screened out...");
}

bool PRSMultiMetaData::SetNBVariable(VarIndex var, bool categorical, bool input, bool forced) {
  const bool isKept = forced || !fRun.IsSelecting();
  const INBVariable::VariableRole role = !input   ? INBVariable::kOutput
                                         : isKept ? INBVariable::kInput
                                                  : INBVariable::kPossibleInput;
  const KOVA_Variable& variable = fSource.GetVariable(var);
  const bool isAccepted =
      categorical ? SetCategorical(variable, var, input, role) : SetContinuous(variable, var, role);
  const int index = fRun.VarSpecs().GetRecVarIndex(var);
  MCCommon::Assert(index == fVarList.Size() - 1, "index == fVarList.Size() - 1", kSource);
  if (fbKeepValues) SetNBMissingValues(variable, index);
  if (forced && !isAccepted) fMessages.SomeForcePredsExcluded();
  return isAccepted;
}

bool PRSMultiMetaData::SetContinuous(const KOVA_Variable& variable, VarIndex var,
                                     INBVariable::VariableRole role) {
  const double low = fAdapter.GetContMinValue(var);
  const double high = fAdapter.GetContMaxValue(var);
  const bool differ = low != high;
  const bool isUsable = differ && !IsScreenedOut(var);
  MCCommon::Assert(!differ || low < high, "minimum < maximum", kSource);
  if (!differ) (MCMV::IsMissing(low) ? fMissPredictors : fConstPredictors).push_back(var);
  (void)fVarList.AddContVar(variable.GetName(), variable.GetLabel(), low, high,
                            fSpecs.GetMultiBins(), isUsable ? role : INBVariable::kUnused);
  return isUsable;
}

bool PRSMultiMetaData::SetCategorical(const KOVA_Variable& variable, VarIndex var, bool input,
                                      INBVariable::VariableRole role) {
  const int nCats = fAdapter.GetCatVarSize(var);
  const bool isUsable = nCats > 1 && !IsScreenedOut(var);
  if (nCats < 2 && input) (nCats == 1 ? fConstPredictors : fMissPredictors).push_back(var);
  if (!isUsable && !input) TargetUnusable(nCats);
  if (isUsable && !input && !fSpecs.GetPredProbRootName().IsEmpty()) {
    fNSaveDepCats = std::min(nCats, fSpecs.GetPredProbNumber());
    MCCommon::Assert(fNSaveDepCats > 0, "fNSaveDepCats > 0", kSource);
  }
  AddCategories(variable, var, nCats, isUsable ? role : INBVariable::kUnused);
  return isUsable;
}

void PRSMultiMetaData::TargetUnusable(int nCats) {
  if (nCats == 1) {
    (void)fRun.Fail(MCNaive::kDataUnusable);
    fMessages.DependVarConst();
  } else {
    (void)fRun.Fail(MCNaive::kNoRecordsFound);
    fRun.DisplayMessage(fRun.GetStatus());
  }
}

void PRSMultiMetaData::AddCategories(const KOVA_Variable& variable, VarIndex var, int nCats,
                                     INBVariable::VariableRole role) {
  const std::string& name = variable.GetName();
  const std::string& label = variable.GetLabel();
  if (!fbKeepValues) {
    const auto level =
        variable.IsNumeric() ? INBVariable::kNumericCategorical : INBVariable::kStringCategorical;
    (void)fVarList.AddCatVar(name, label, nCats, level, role);
    return;
  }
  std::vector<double> numbers;
  std::vector<std::string> strings;
  std::vector<std::string> labels;
  for (int code = 0; code < nCats; ++code) {
    const KOVA_Value value = fRun.Decode(var, code);
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
  (void)(variable.IsNumeric() ? fVarList.AddCatVar(name, label, numbers, labels, role)
                              : fVarList.AddCatVar(name, label, strings, labels, role));
}

// User-missing values that are included are values like any other.
void PRSMultiMetaData::SetNBMissingValues(const KOVA_Variable& variable, int index) {
  if (!fSpecs.IsMissingExclude()) return;
  const KOVA_MissingValues& missing = variable.GetMissingValues();
  const auto labelOf = [&variable](const auto& value) {
    const std::string* label = variable.GetValueLabels().FindLabel(value);
    return label == nullptr ? std::string() : *label;
  };
  if (!variable.IsNumeric()) {
    for (const std::string& value : missing.GetStrings()) {
      fVarList.AddDiscreteUserMissing(index, value, labelOf(value));
    }
    return;
  }
  for (const double value : missing.GetNumbers()) {
    fVarList.AddDiscreteUserMissing(index, value, labelOf(value));
  }
  if (missing.HasRange()) {
    fVarList.SetMissingInterval(index, missing.GetLow(), missing.GetHigh());
  }
}
