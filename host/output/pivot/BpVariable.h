// A variable as a label, cell or argument: shown by its label, or its name when it has none.
#pragma once

#include "host/data/KOVA_Variable.h"
#include "host/output/OutputText.h"

inline MCHost::OutputText BpVariable(const KOVA_Variable& variable) {
  return MCHost::OutputText::Variable(variable.GetName(), variable.GetLabel());
}
