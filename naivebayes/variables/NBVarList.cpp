#include "naivebayes/variables/NBVarList.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <set>
#include <utility>

#include "common/MissingValue.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBStringUserMissing.h"
#include "naivebayes/variables/NBCatVar.h"
#include "naivebayes/variables/NBContVar.h"
#include "naivebayes/variables/NBWeightVar.h"

namespace {

// Extends a copy of the variable's definition: encoders own theirs.
template <typename Missing, typename Change>
void ChangeUserMissing(INBVariable& variable, Change change) {
  const auto* present = dynamic_cast<const Missing*>(variable.GetUserMissingInfo());
  auto missing =
      present != nullptr ? std::make_unique<Missing>(*present) : std::make_unique<Missing>();
  change(*missing);
  variable.SetUserMissingInfo(std::move(missing));
}

std::unique_ptr<INBVariable> WithLabels(std::unique_ptr<INBVariable> variable,
                                        const std::vector<std::string>& labels) {
  variable->GetEncoder()->SetValueLabels(labels);
  return variable;
}

bool IsCategory(double value) { return !std::isnan(value) && value != MCMV::gMissingValue; }
bool IsCategory(const std::string& /*value*/) { return true; }

// Codes must stand for one value each.
template <typename Value>
bool AreCategories(const std::vector<Value>& values) {
  return std::all_of(values.begin(), values.end(), [](const auto& v) { return IsCategory(v); }) &&
         std::set<Value>(values.begin(), values.end()).size() == values.size();
}

bool IsSameVariable(const INBVariable& a, const INBVariable& b) {
  if (a.GetVariableName() != b.GetVariableName() || a.GetMeasureLevel() != b.GetMeasureLevel() ||
      a.GetVariableRole() != b.GetVariableRole()) {
    return false;
  }
  const auto* binned = dynamic_cast<const NBContVar*>(&a);
  return binned == nullptr ||
         binned->GetSetupCutpoints() == static_cast<const NBContVar&>(b).GetSetupCutpoints();
}

}  // namespace

NBVarList::NBVarList(const NBVarList& other) {
  for (const auto& variable : other.fvpVars) Add(variable->Clone());
}

bool NBVarList::IsNameFree(const std::string& name) const {
  return !name.empty() && !fIndexOfName.contains(name);
}

bool NBVarList::IsWeight(const INBVariable& variable) {
  return variable.GetVariableRole() == INBVariable::kFrequencyWeight &&
         variable.GetMeasureLevel() == INBVariable::kWeightLevel;
}

int NBVarList::Add(std::unique_ptr<INBVariable> variable) {
  if (!IsNameFree(variable->GetVariableName())) return -1;
  const int index = Size();
  const INBVariable::MeasureLevel level = variable->GetMeasureLevel();
  fNContVars += level == INBVariable::kContinuous;
  fNCatVars +=
      level == INBVariable::kNumericCategorical || level == INBVariable::kStringCategorical;
  if (variable->GetVariableRole() == INBVariable::kOutput) fTarget = index;
  if (IsWeight(*variable)) fWeight = index;
  fIndexOfName.emplace(variable->GetVariableName(), index);
  fvpVars.push_back(std::move(variable));
  return index;
}

int NBVarList::AddCatVar(const std::string& name, const std::string& label, int nCats,
                         INBVariable::MeasureLevel level, INBVariable::VariableRole role) {
  return Add(std::make_unique<NBCatVar>(name, label, nCats, level, role));
}

int NBVarList::AddCatVar(const std::string& name, const std::string& label,
                         const std::vector<double>& values, INBVariable::VariableRole role) {
  if (!AreCategories(values)) return -1;
  return Add(std::make_unique<NBCatVar>(name, label, values, role));
}

int NBVarList::AddCatVar(const std::string& name, const std::string& label,
                         const std::vector<double>& values, const std::vector<std::string>& labels,
                         INBVariable::VariableRole role) {
  if (!AreCategories(values)) return -1;
  return Add(WithLabels(std::make_unique<NBCatVar>(name, label, values, role), labels));
}

int NBVarList::AddCatVar(const std::string& name, const std::string& label,
                         const std::vector<std::string>& values, INBVariable::VariableRole role) {
  if (!AreCategories(values)) return -1;
  return Add(std::make_unique<NBCatVar>(name, label, values, role));
}

int NBVarList::AddCatVar(const std::string& name, const std::string& label,
                         const std::vector<std::string>& values,
                         const std::vector<std::string>& labels, INBVariable::VariableRole role) {
  if (!AreCategories(values)) return -1;
  return Add(WithLabels(std::make_unique<NBCatVar>(name, label, values, role), labels));
}

int NBVarList::AddContVar(const std::string& name, const std::string& label, double min, double max,
                          int bins, INBVariable::VariableRole role) {
  if (role == INBVariable::kOutput) return -1;
  return Add(std::make_unique<NBContVar>(name, label, min, max, bins, role));
}

int NBVarList::AddContVar(const std::string& name, const std::string& label,
                          const std::vector<double>& cutpoints, INBVariable::VariableRole role) {
  if (role == INBVariable::kOutput || !std::is_sorted(cutpoints.begin(), cutpoints.end()))
    return -1;
  return Add(std::make_unique<NBContVar>(name, label, cutpoints, role));
}

int NBVarList::AddWeightVar(const std::string& name, const std::string& label,
                            INBVariable::NBWRoundingOption rounding) {
  return Add(std::make_unique<NBWeightVar>(name, label, rounding));
}

void NBVarList::AddDiscreteUserMissing(int var, double value, const std::string& label) {
  ChangeUserMissing<NBNumericUserMissing>(
      *GetVarAt(var), [&](auto& missing) { missing.AddDiscreteValue(value, label); });
}

void NBVarList::AddDiscreteUserMissing(int var, const std::string& value,
                                       const std::string& label) {
  ChangeUserMissing<NBStringUserMissing>(
      *GetVarAt(var), [&](auto& missing) { missing.AddDiscreteValue(value, label); });
}

void NBVarList::SetMissingInterval(int var, double low, double high) {
  ChangeUserMissing<NBNumericUserMissing>(
      *GetVarAt(var), [&](auto& missing) { missing.SetInterval(NBNumericInterval(low, high)); });
}

int NBVarList::FindVariable(const std::string& name) const {
  const auto found = fIndexOfName.find(name);
  return found == fIndexOfName.end() ? -1 : found->second;
}

INBVariable::VariableRole NBVarList::GetVariableRole(int var) const {
  return GetVarAt(var)->GetVariableRole();
}

void NBVarList::SetVariableRole(int var, INBVariable::VariableRole role) {
  if (fTarget == var) fTarget = -1;
  if (fWeight == var) fWeight = -1;
  GetVarAt(var)->SetVariableRole(role);
  if (role == INBVariable::kOutput) fTarget = var;
  if (IsWeight(*GetVarAt(var))) fWeight = var;
}

int NBVarList::CountRole(INBVariable::VariableRole role) const {
  return static_cast<int>(std::count_if(fvpVars.begin(), fvpVars.end(), [role](const auto& v) {
    return v->GetVariableRole() == role;
  }));
}

int NBVarList::GetNInputCats() const {
  int categories = 0;
  for (const auto& v : fvpVars) {
    if (v->GetVariableRole() == INBVariable::kInput) categories += v->GetNumberOfCategories();
  }
  return categories;
}

int NBVarList::GetNOutputCats() const {
  return fTarget < 0 ? 0 : fvpVars[fTarget]->GetNumberOfCategories();
}

void NBVarList::GetVarNames(std::vector<std::string>& inputs, std::string& target) const {
  inputs.clear();
  for (const auto& v : fvpVars) {
    if (v->GetVariableRole() == INBVariable::kInput) inputs.push_back(v->GetVariableName());
  }
  target = fTarget < 0 ? std::string() : fvpVars[fTarget]->GetVariableName();
}

void NBVarList::RemoveVar(int var) {
  if (var < 0 || var >= Size()) return;
  fvpVars.erase(fvpVars.begin() + var);
  Reindex();
}

void NBVarList::RemoveVar(const std::string& name) { RemoveVar(FindVariable(name)); }

void NBVarList::Reindex() {
  auto variables = std::move(fvpVars);
  fvpVars.clear();
  fIndexOfName.clear();
  fNContVars = fNCatVars = 0;
  fTarget = fWeight = -1;
  for (auto& variable : variables) Add(std::move(variable));
}

void NBVarList::UpdateNumbersOfCategories() {
  for (const auto& v : fvpVars) v->UpdateNumberOfCategories();
}

void NBVarList::SetupContEncoders(int bins, bool replaceExisting) {
  for (const auto& v : fvpVars) {
    auto* binned = dynamic_cast<NBContVar*>(v.get());
    if (binned != nullptr && (replaceExisting || binned->GetEncoder() == nullptr)) {
      binned->SetupEncoder(bins);
    }
  }
}

void NBVarList::RemoveContEncoders(bool forgetRanges) {
  for (const auto& v : fvpVars) {
    if (auto* binned = dynamic_cast<NBContVar*>(v.get())) binned->ClearEncoder(forgetRanges);
  }
}

bool NBVarList::CanMergeWith(const NBVarList& other, int& var) const {
  var = -1;
  if (Size() != other.Size()) return false;
  for (int i = 0; i < Size(); ++i) {
    if (IsSameVariable(*GetVarAt(i), *other.GetVarAt(i))) continue;
    var = i;
    return false;
  }
  return true;
}

bool NBVarList::IsValidList(std::vector<int>& constantVars, std::vector<int>& emptyVars,
                            bool withPossibleInputs) const {
  constantVars.clear();
  emptyVars.clear();
  for (int i = 0; i < Size(); ++i) {
    const INBVariable::VariableRole role = GetVariableRole(i);
    if (role == INBVariable::kUnused) continue;
    if (role == INBVariable::kPossibleInput && !withPossibleInputs) continue;
    const INBVariable::VarStatus status = fvpVars[i]->GetVarStatus();
    if (status == INBVariable::kConstant) constantVars.push_back(i);
    if (status == INBVariable::kEmpty) emptyVars.push_back(i);
  }
  return constantVars.empty() && emptyVars.empty();
}

void NBVarList::Display(std::ostream& os) const {
  os << "Variable list: " << Size() << " variables, target " << fTarget << ", weight " << fWeight
     << '\n';
  for (const auto& v : fvpVars) v->Display(os);
}
