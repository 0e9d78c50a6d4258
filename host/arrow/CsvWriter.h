// Writes delimited text.
#pragma once

#include <arrow/type_fwd.h>

#include <string>
#include <vector>

namespace MCHost {

class CsvRecords;
class SavedBatches;

// A header row, then a row for each case, with cells as CsvCells has them; lines end with LF. A row
// of one empty cell is "", since a blank line is no row. The file appears whole or not at all.
// Throws HostIOError.
void WriteCsv(SavedBatches& batches, const std::string& path, char delimiter);

// Copies a file of delimited text and appends to each of its records the cells of the next case of
// `added`, which has as many cases. Without `keys` each byte of the records is copied, else the
// bytes of these fields alone, in this order. Line ends, blank lines and a byte order mark stay as
// they are. Where the delimiter is another one, it takes the place of the old one, and a field that
// holds it gets quotes.
void CopyCsv(CsvRecords& records, const std::vector<int>* keys, arrow::RecordBatchReader& added,
             const std::string& path, char delimiter);

}  // namespace MCHost
