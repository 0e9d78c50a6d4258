// A value of a variable as a label or argument: shown by its value label, or printed in the
// variable's format when it has none.
#pragma once

#include <string>

#include "host/output/OutputText.h"

class KOVA_Variable;

// The value of a numeric variable. Decimals that the format would cut off are kept.
MCHost::OutputText BpDataValue(const KOVA_Variable& variable, double value);

// The value of a string variable.
MCHost::OutputText BpDataValue(const KOVA_Variable& variable, const std::string& value);
