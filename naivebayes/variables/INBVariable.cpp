#include "naivebayes/variables/INBVariable.h"

#include <ostream>
#include <utility>

const char* INBVariable::GetRoleName(VariableRole role) {
  static constexpr const char* kNames[] = {"Undefined variable role", "Input",
                                           "Possible Input",          "Output",
                                           "Frequency weight",        "Unused variable"};
  return kNames[role];
}

const char* INBVariable::GetLevelName(MeasureLevel level) {
  static constexpr const char* kNames[] = {"Unknown measure level", "Continuous",
                                           "Numeric Categorical", "String Categorical",
                                           "Frequency weight"};
  return kNames[level];
}

const char* INBVariable::GetRoundingName(NBWRoundingOption option) {
  static constexpr const char* kNames[] = {"Truncate to smaller int", "Round to closest int",
                                           "As is - no change"};
  return kNames[option];
}

INBVariable::INBVariable(std::string name, std::string label, VariableRole role)
    : fName(std::move(name)), fLabel(std::move(label)), fRole(role) {}

void INBVariable::SetUserMissingInfo(std::unique_ptr<INBUserMissing> missing) {
  if (INBEncoder* encoder = GetEncoder()) encoder->SetUserMissingInfo(std::move(missing));
}

const INBUserMissing* INBVariable::GetUserMissingInfo() const {
  const INBEncoder* encoder = GetEncoder();
  return encoder == nullptr ? nullptr : encoder->GetUserMissingInfo();
}

void INBVariable::Display(std::ostream& os) const {
  os << fName << ": " << GetLevelName(GetMeasureLevel()) << ", " << GetRoleName(fRole) << ", "
     << GetNumberOfCategories() << " categories\n";
  if (GetEncoder() != nullptr) GetEncoder()->Display(os);
  if (GetUserMissingInfo() != nullptr) GetUserMissingInfo()->Display(os);
}
