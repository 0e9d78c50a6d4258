// What the findings of both commands are written with.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "backend/predselect/PRSFindings.h"

class KOVA_Variable;
struct StateVariable;
namespace MCHost {
class ITable;
}

namespace PredSelect {

using Json = nlohmann::ordered_json;

// Null for a number that is missing or infinite.
Json JsonNumber(double value);

// Null where there is no table, or no such variable.
const KOVA_Variable* FindVariable(const MCHost::ITable* table, const std::string& name);

// The label that the variable (null: none) gives a value, else the value as text.
std::string ValueText(const KOVA_Variable* variable, double value, const std::string& text);
std::string ValueText(const KOVA_Variable* variable, const std::string& value);

Json RankingFindings(const PRSFindings& findings, const MCHost::ITable* table);
Json ModelFindings(const PRSFindings& findings, const MCHost::ITable* table);

}  // namespace PredSelect
