// Writes batches in the columnar formats.
#pragma once

#include <string>

namespace MCHost {

class SavedBatches;

// All types and metadata go out as they are. Parquet has no whole seconds (they become
// milliseconds), no dates in milliseconds (they become days), no decimals of a negative scale (they
// become whole ones) and dictionaries of strings alone (others become their values). The file
// appears whole or not at all. Throws HostIOError.
void WriteParquet(SavedBatches& batches, const std::string& path);

// A file of Arrow has one dictionary a column, which further batches can add to, as long as its
// codes suffice and it holds no value twice.
enum class Dictionaries { kKept, kAsValues };

// False where dictionaries are to be kept and those of a column do not go into one: nothing was
// written then.
bool WriteIpc(SavedBatches& batches, const std::string& path, Dictionaries dictionaries);

}  // namespace MCHost
