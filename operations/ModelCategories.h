// The categories of a saved Naive Bayes model's variables as values.
#pragma once

#include <string>
#include <vector>

#include "host/cases/KOVA_Value.h"
#include "host/data/KOVA_MissingValues.h"

class INBVariable;

namespace PredSelect {

// A category of a categorical variable: as text, and as a number (missing for a string variable).
// One that the model knows by its number alone goes by that number.
std::string CategoryText(const INBVariable& variable, int code);
// The same of a value that the model may not know.
std::string CategoryText(const KOVA_Value& value);
double CategoryNumber(const INBVariable& variable, int code);

// All of them by code: numbers of a numeric variable, texts of any other.
std::vector<KOVA_Value> CategoriesOf(const INBVariable& variable);

// The values that a categorical variable takes as missing.
KOVA_MissingValues MissingValuesOf(const INBVariable& variable);

}  // namespace PredSelect
