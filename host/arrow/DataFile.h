// Opens data files as tables and writes tables as data files. The extension decides on the format:
// .csv, .tsv, .parquet, .arrow or .feather; "-" is CSV on standard input.
//
// CSV and TSV: a header row, the quoting of RFC 4180, UTF-8 with or without a byte order mark, and
// blank lines skipped. Empty fields, NA, NaN and null are missing, quoted or not (a quoted empty
// string as well). What a column holds is settled by all its values: numbers (also 1e5, inf; an
// infinity is missing), true and false, dates, dates with times, times, else text.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/data/DataTable.h"
#include "host/data/FieldType.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

struct DataFileOptions {
  std::vector<std::string> fNullTokens;     // further texts that are missing in CSV
  std::map<std::string, FieldType> fTypes;  // declared types of CSV columns; a value that does not
                                            // fit is an error
};

// Looks at the file and makes it a source that can be read again and again. CSV is checked as a
// whole first. Throws HostIOError, with line and column for CSV.
std::unique_ptr<IArrowSource> OpenDataSource(const std::string& path,
                                             const DataFileOptions& options = {});

enum class TableStorage {
  kMemory,   // the cells are read once and kept
  kStreamed  // every scan reads the file again
};

// The table of a file. Standard input cannot be streamed. Throws HostIOError.
std::unique_ptr<DataTable> OpenDataFile(const std::string& path, const DataFileOptions& options,
                                        TableStorage storage);

// Throws HostIOError where WriteDataFile could not begin: another extension, a folder that takes no
// files.
void CheckDataFile(const std::string& path);

// Writes all columns and cases, added variables included. Missing cells are empty (CSV) or null;
// whole numbers below 2^53 are written without a point in CSV and as they are in the other formats,
// where the label of a variable goes with it. The file appears whole or not at all.
// Throws HostIOError.
void WriteDataFile(ITable& table, const std::string& path);

}  // namespace MCHost
