// Writes batches in the columnar formats.
#pragma once

#include <string>

namespace MCHost {

class SavedBatches;

// All types and metadata go out as they are. Parquet has no whole seconds (they become
// milliseconds), no dates in milliseconds (they become days) and dictionaries of strings alone
// (others become their values). The file appears whole or not at all. Throws HostIOError.
void WriteParquet(SavedBatches& batches, const std::string& path);
void WriteIpc(SavedBatches& batches, const std::string& path);

}  // namespace MCHost
