#include "host/cases/UAVarValidSpecs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "common/MCAssert.h"
#include "common/MissingValue.h"
#include "host/cases/KOVA_Value.h"
#include "host/data/ITable.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

std::string FormatNumber(double value, const KOVA_Format& format) {
  if (MCMV::IsMissing(value)) return ".";
  if (value == 0.0) value = 0.0;  // no "-0"
  const auto width = static_cast<std::size_t>(std::max(format.fWidth, 1));
  if (std::fabs(value) < 1e40) {
    for (int decimals = std::max(format.fDecimals, 0); decimals >= 0; --decimals) {
      std::string text = fmt::format("{:.{}f}", value, decimals);
      if (text.size() <= width) return text;
    }
  }
  for (int decimals = std::max(format.fWidth, 1); decimals > 0; --decimals) {
    std::string text = fmt::format("{:.{}E}", value, decimals);
    if (text.size() <= width) return text;
  }
  return fmt::format("{:.0E}", value);
}

}  // namespace

UAVarValidSpecs::UAVarValidSpecs(bool deliverMissing, bool excludeUserMissing,
                                 bool encodeCategories)
    : fbDeliverMissing(deliverMissing),
      fbExcludeUserMissing(excludeUserMissing),
      fbEncodeCategories(encodeCategories) {}

int UAVarValidSpecs::AddVariable(int kovaVar, bool categorical) {
  const int position = GetRecVarIndex(kovaVar);
  return position >= 0 ? position : Append(kovaVar, categorical);
}

void UAVarValidSpecs::AddVariables(const std::vector<int>& kovaVars,
                                   const std::vector<bool>& categorical,
                                   std::vector<int>& positions) {
  MCCommon::Assert(kovaVars.size() == categorical.size(), "kovaVars.size() == categorical.size()",
                   "host/cases/UAVarValidSpecs");
  positions.clear();
  positions.reserve(kovaVars.size());
  for (std::size_t i = 0; i < kovaVars.size(); ++i) {
    positions.push_back(AddVariable(kovaVars[i], categorical[i]));
  }
}

int UAVarValidSpecs::SetWeightVar() {
  const int kovaVar = MCHost::CurrentSession().Table().GetWeightVarIndex();
  if (kovaVar < 0) return -1;
  const auto same = [kovaVar](const RecordVar& var) {
    return var.fKOVAVar == kovaVar && !var.fbCategorical;
  };
  const auto found = std::find_if(fRecordVars.begin(), fRecordVars.end(), same);
  fWeightPosition = found != fRecordVars.end() ? static_cast<int>(found - fRecordVars.begin())
                                               : Append(kovaVar, false);
  return fWeightPosition;
}

int UAVarValidSpecs::Append(int kovaVar, bool categorical) {
  const int position = GetNRecordVars();
  fRecordVars.push_back({kovaVar, categorical});
  fFirstPosition.emplace(kovaVar, position);
  return position;
}

int UAVarValidSpecs::GetNRecordVars() const { return static_cast<int>(fRecordVars.size()); }
bool UAVarValidSpecs::IsUserMissingExcluded() const { return fbExcludeUserMissing; }
bool UAVarValidSpecs::IsMissingDelivered() const { return fbDeliverMissing; }
bool UAVarValidSpecs::AreCategoriesEncoded() const { return fbEncodeCategories; }

int UAVarValidSpecs::GetKOVAVarIndex(int recordVar) const {
  if (recordVar < 0 || recordVar >= GetNRecordVars()) return -1;
  return fRecordVars[static_cast<std::size_t>(recordVar)].fKOVAVar;
}

int UAVarValidSpecs::GetRecVarIndex(int kovaVar) const {
  const auto found = fFirstPosition.find(kovaVar);
  return found == fFirstPosition.end() ? -1 : found->second;
}

bool UAVarValidSpecs::GetKOVACatVar(int kovaVar) const {
  const int position = GetRecVarIndex(kovaVar);
  return position >= 0 && IsCategorical(position);
}

bool UAVarValidSpecs::IsCategorical(int recordVar) const {
  return fRecordVars[static_cast<std::size_t>(recordVar)].fbCategorical;
}

std::string UAVarValidSpecs::ConvertObsToString(const KOVA_Value& value,
                                                const KOVA_Variable& variable) {
  return value.IsNumeric() ? FormatNumber(value.GetNumber(), variable.GetFormat())
                           : value.GetString();
}
