// Writes a table in the columnar formats.
#pragma once

#include <string>

namespace MCHost {

class ITable;

// Numbers go out as doubles, strings as UTF-8, missing cells as nulls; a variable's label goes with
// its column under the key "label". The file appears whole or not at all. Throws HostIOError.
void WriteParquet(ITable& table, const std::string& path);
void WriteIpc(ITable& table, const std::string& path);

}  // namespace MCHost
