// The first pass over a table that lies in parts: what each part knows of ranges and categories.
#pragma once

#include <cstdint>

#include "common/parts/TableRanges.h"
#include "operations/Surroundings.h"

namespace MCHost {
class DataTable;
}

namespace PredSelect {

// Reads the table once. `part` is its number among the parts, from 0. Numbers on a scale, and
// columns of more than ColumnRange::kMostCategories values, have no categories listed. Throws
// MCHost::HostIOError, and Cancelled where the surroundings say so. REQUIRES: the table was
// prepared; 0 <= part < TableRanges::kMostParts.
TableRanges FindRanges(MCHost::DataTable& table, std::int64_t part,
                       const Surroundings& surroundings);

}  // namespace PredSelect
