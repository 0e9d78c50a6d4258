// Writes a table as delimited text.
#pragma once

#include <string>

namespace MCHost {

class ITable;

// A header row, then a row for each case; lines end with LF. Numbers are written with as many
// digits as it takes to read the same double again, missing cells are empty (in a table of one
// column "", since a blank line is no row), and texts are quoted where the format needs it.
// The file appears whole or not at all. Throws HostIOError.
void WriteCsv(ITable& table, const std::string& path, char delimiter);

}  // namespace MCHost
