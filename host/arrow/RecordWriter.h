// Writes tables as lines of text with a record in each: JSON Lines and Markdown.
#pragma once

#include <string>

#include "host/data/FileFormat.h"

namespace MCHost {

class SavedBatches;

// JSON Lines: numbers, true and false as such, null for what is missing and for numbers that JSON
// does not have; all else as texts, in the form of CsvCells. Markdown: a table to read, in the same
// form, with what would steer a terminal made visible. The file appears whole or not at all. Throws
// HostIOError. REQUIRES: one of these two.
void WriteRecordLines(SavedBatches& batches, const std::string& path, FileFormat format);

}  // namespace MCHost
