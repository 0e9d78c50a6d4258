// The names of the measurement levels, and the one rule by which a variable without one gets it.
//
// Strings are nominal. Numbers are nominal when all their valid values are whole and fewer than
// ColumnRange::kScaleDistinctValues of them are distinct, otherwise scale. Missing values,
// user-missing ones among them, are not valid and say nothing about the level; a variable without
// valid values is nominal.
#pragma once

#include <string>

#include "host/data/KOVA_Variable.h"

namespace MCHost {

class ITable;

// "nominal", "ordinal" or "scale"; "unknown" before the level is settled.
const char* MeasurementLevelName(KOVA_Variable::MeasurementLevel level);

// The level of such a name, kUnknown for any other text.
KOVA_Variable::MeasurementLevel FindMeasurementLevel(const std::string& name);

// Sets the level of every variable whose level is unknown; the others keep theirs. Reads only the
// numeric columns in question: their first cases, then once all cases of those that are not known
// to be scale by then. Throws HostIOError.
void SettleMeasurementLevels(ITable& table);

}  // namespace MCHost
