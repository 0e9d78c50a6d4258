// What the findings of both commands are written with.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "backend/predselect/PRSFindings.h"

class INBVariable;
class KOVA_Variable;
struct StateVariable;
namespace MCCommon {
struct Evaluation;
class ScoreCurves;
}  // namespace MCCommon
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

// The categories of a model's variable, as they are shown.
Json CategoryTexts(const INBVariable& variable, int nCategories, const MCHost::ITable* table);

// By category the steps that hold a case: number of the step, weight of the category's cases and of
// the others, mean probability. With the evaluation of the same cases also the areas under the ROC
// curves that have steps, but from the probabilities themselves; null for a category with no case
// or all, and for all where there were too many different ones.
Json CurveFindings(const MCCommon::ScoreCurves& curves, const MCCommon::Evaluation* evaluation);

// As the text of a document.
std::string TextOf(const Json& json);

Json RankingFindings(const PRSFindings& findings, const MCHost::ITable* table);
Json ModelFindings(const PRSFindings& findings, const MCHost::ITable* table);

}  // namespace PredSelect
