// Opens data files as tables and writes tables as data files. The extension decides on the format,
// .csv, .tsv, .parquet, .arrow, .feather or .jsonl, to read also .json, .xlsx and .ods, to write
// .md, unless the options do; "-" is standard input, CSV where nobody says otherwise; a folder or a
// pattern is all its files as one table. Text may be packed (.csv.gz), and a workbook called
// anything: what a file holds tells, not its name. "sqlite:FILE", "duckdb:FILE" and
// "postgresql://..." are tables of databases (DatabaseAddress.h).
//
// CSV and TSV: the quoting of RFC 4180, blank lines skipped; delimiter, quote, header, encoding and
// the marks of numbers as the start of the file shows them (CsvSniffer.h). Empty fields and the
// words of NullWords.h are missing, quoted or not (a quoted empty string as well). What a column
// holds is settled by all its values: numbers (also 1e5, inf; an infinity is missing), true and
// false, dates, dates with times, times, else text.
#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/data/DataTable.h"
#include "host/data/FieldType.h"
#include "host/data/FileFormat.h"
#include "host/data/IArrowSource.h"
#include "host/data/ReadingOptions.h"

namespace MCHost {

struct DataFileOptions {
  std::vector<std::string> fNullTokens;     // further texts that are missing in text
  std::map<std::string, FieldType> fTypes;  // declared types of CSV columns; a value that does not
                                            // fit is an error
  bool fbKeepOriginal = true;               // standard input is kept for WriteDataFile
  ReadingOptions fReading{};                // what is said of how the file is to be read
  // Texts that are missing in a column of text, by its name.
  std::map<std::string, std::vector<std::string>> fColumnNulls{};
  std::vector<std::string> fDriverPlaces{};  // where drivers of databases may be, besides
  // What cells that are kept may take; a table of more is streamed instead.
  std::size_t fMaxKeptBytes = std::numeric_limits<std::size_t>::max();
};

// Looks at the file and makes it a source that can be read again and again. CSV is checked as a
// whole first. Throws HostIOError, with line and column for CSV.
std::unique_ptr<IArrowSource> OpenDataSource(const std::string& path,
                                             const DataFileOptions& options = {});

enum class TableStorage {
  kMemory,    // the cells are read once and kept, as long as the options leave room for them
  kStreamed,  // every scan reads the file again
  kOnce       // for cases that are gone over once: as streamed where a file is large and that can
              // be, else as in memory
};

// The table of a file. A CSV file whose cells are held, in memory or aside, is read once and on all
// cores by what its start promises, and checked as a whole only where it breaks that: types and
// messages are the same. Standard input and pipes are put by first. Throws HostIOError.
std::unique_ptr<DataTable> OpenDataFile(const std::string& path, const DataFileOptions& options,
                                        TableStorage storage);

// The files that a path means: those of a folder or of a pattern (DataParts.h), else itself.
std::vector<std::string> FilesOfData(const std::string& path);

// Where a table is written, and in which form.
struct DataTarget {
  // A path stands for itself: its extension tells the format. Throws HostIOError for one that tells
  // no format of data.
  DataTarget(std::string path);  // NOLINT(google-explicit-constructor)
  // REQUIRES: a format of data.
  DataTarget(FileFormat format, std::string path) : fFormat(format), fPath(std::move(path)) {}

  FileFormat fFormat;
  std::string fPath;  // "-": standard output; there Arrow is a stream, not a file
};

// Throws HostIOError where WriteDataFile could not begin: a folder that takes no files.
void CheckDataFile(const DataTarget& target);

// Writes the columns that the data brought as they are in their file, which is read again, and the
// variables that were added behind them:
//   CSV to CSV           each record byte for byte; docs/data.md says what that includes, and for
//                        which text it is not so
//   CSV to columns       a column by what it holds, but as texts where a value would say less
//   columns to columns   types, values and metadata; ColumnarWriter.h names what Parquet lacks
//   columns to CSV       CsvCells.h
//   all to lines         RecordWriter.h: JSON Lines, Markdown
// `keys`: only these of them, in this order; null for all. A table without a source, or one that
// cannot be read again, gives doubles and texts. The file appears whole or not at all; it may be
// the one that is read. Throws HostIOError, also where the file is not what it was. REQUIRES: each
// key is a column that the data brought, and comes once.
void WriteDataFile(DataTable& table, const DataTarget& target,
                   const std::vector<int>* keys = nullptr);

}  // namespace MCHost
