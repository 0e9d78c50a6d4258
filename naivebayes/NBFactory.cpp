#include "naivebayes/NBFactory.h"

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBWithinMemory.h"
#include "naivebayes/variables/NBCatVar.h"

using MCNaive::MCStatus;

namespace {

bool HasCategoricalTarget(const NBVarList& varList) {
  if (varList.GetTargetIndex() < 0) return false;
  const INBVariable::MeasureLevel level =
      varList.GetVarAt(varList.GetTargetIndex())->GetMeasureLevel();
  return level == INBVariable::kNumericCategorical || level == INBVariable::kStringCategorical;
}

bool CanMeetUserMissing(const INBVariable& variable) {
  const INBUserMissing* missing = variable.GetUserMissingInfo();
  if (missing == nullptr) return true;
  const auto* categorical = dynamic_cast<const NBCatVar*>(&variable);
  const bool isString = variable.GetMeasureLevel() == INBVariable::kStringCategorical;
  return (categorical == nullptr || categorical->KnowsValues()) &&
         (missing->GetDataType() == INBUserMissing::kString) == isString;
}

bool IsInput(INBVariable::VariableRole role) {
  return role == INBVariable::kInput || role == INBVariable::kPossibleInput;
}

// What is wrong with a variable, given those before it.
MCStatus CheckVariable(const NBVarList& varList, int var) {
  const INBVariable::VariableRole role = varList.GetVariableRole(var);
  const bool isOnce = role == INBVariable::kOutput || role == INBVariable::kFrequencyWeight;
  for (int i = 0; isOnce && i < var; ++i) {
    if (varList.GetVariableRole(i) == role) return MCNaive::Error(MCNaive::kRoleTwice);
  }
  if (IsInput(role) && varList.GetEncoderAt(var) == nullptr) {
    return MCNaive::Error(MCNaive::kNoBins);
  }
  const bool canMeet =
      role == INBVariable::kUnused || CanMeetUserMissing(*varList.GetVarAt(var));
  return canMeet ? MCStatus() : MCNaive::Error(MCNaive::kUserMissingUnusable);
}

MCStatus CheckList(const NBVarList& varList) {
  for (int i = 0; i < varList.Size(); ++i) {
    MCStatus status = CheckVariable(varList, i);
    status.SetDiscreteDatum(0, i);
    if (status.IsError()) return status;
  }
  std::vector<int> constantVars, emptyVars;
  const bool isValid =
      HasCategoricalTarget(varList) && varList.IsValidList(constantVars, emptyVars, true);
  return isValid ? MCStatus() : MCNaive::Error(MCNaive::kNotConstructed);
}

}  // namespace

std::unique_ptr<INBAlgorithm> NBFactory::CreateNBAlgorithm(NaiveBayesSettings& settings,
                                                           NBVarList& varList) {
  std::unique_ptr<INBAlgorithm> component;
  fStatus = MCNaive::WithinMemory([&] {
    const MCStatus status = CheckList(varList);
    if (!status.IsError()) component = std::make_unique<NBAlgorithm>(settings, varList);
    return status;
  });
  return component;
}
