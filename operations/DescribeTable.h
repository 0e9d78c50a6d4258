// The dictionary of a table.
#pragma once

#include "operations/Surroundings.h"

namespace MCHost {
class ITable;
class OutputDocument;
}  // namespace MCHost

namespace PredSelect {

// Reads the table once and shows names, types, levels, valid and missing cases, ranges or
// categories, and labels, in a run of the document, whose data source is the caller's to name.
// User-missing values are counted, not looked into. Completed or cancelled; throws
// MCHost::HostIOError.
Outcome DescribeTable(MCHost::ITable& table, MCHost::OutputDocument& document,
                      const Surroundings& surroundings);

}  // namespace PredSelect
