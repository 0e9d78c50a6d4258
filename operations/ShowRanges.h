// Ranges of a table in parts, as a table to look at.
#pragma once

struct TableRanges;

namespace PredSelect {

// REQUIRES: a session is installed for this thread.
void ShowRanges(const TableRanges& ranges);

}  // namespace PredSelect
