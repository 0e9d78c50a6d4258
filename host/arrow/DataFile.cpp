#include "host/arrow/DataFile.h"

#include <arrow/record_batch.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <numeric>
#include <system_error>
#include <utility>

#include "host/arrow/ColumnarWriter.h"
#include "host/arrow/CsvSource.h"
#include "host/arrow/CsvWriter.h"
#include "host/arrow/DatabaseSource.h"
#include "host/arrow/IpcSource.h"
#include "host/arrow/JsonSource.h"
#include "host/arrow/ParquetSource.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/SheetSource.h"
#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

constexpr char kStandardInput[] = "-";

enum class Format { kDelimited, kParquet, kIpc, kJson, kSheets };

struct Extension {
  const char* fText;
  Format fFormat;
  char fDelimiter;
};

constexpr Extension kExtensions[] = {
    {".csv", Format::kDelimited, ','}, {".tsv", Format::kDelimited, '\t'},
    {".parquet", Format::kParquet, 0}, {".arrow", Format::kIpc, 0},
    {".feather", Format::kIpc, 0},     {".jsonl", Format::kJson, 0},
    {".ndjson", Format::kJson, 0},     {".json", Format::kJson, 0},
    {".xlsx", Format::kSheets, 0},     {".ods", Format::kSheets, 0}};

// Formats behind it are only read.
constexpr Format kLastWritten = Format::kIpc;

std::string ExtensionsUpTo(Format last) {
  std::string names;
  for (const Extension& known : kExtensions) {
    if (known.fFormat > last) continue;
    names += (names.empty() ? "" : ", ") + std::string(known.fText);
  }
  return names;
}

const Extension& ExtensionOf(const std::string& path) {
  std::string end = path.substr(std::min(path.rfind('.'), path.size()));
  for (char& c : end) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  for (const Extension& known : kExtensions) {
    if (end == known.fText) return known;
  }
  throw HostIOError(
      path, "",
      "the extension does not tell a data format; known are " + ExtensionsUpTo(Format::kSheets));
}

// Of a file that is to be written.
const Extension& WrittenExtensionOf(const std::string& path) {
  const Extension& extension = ExtensionOf(path);
  if (extension.fFormat <= kLastWritten) return extension;
  throw HostIOError(
      path, "", "tables are not written in this format, but in " + ExtensionsUpTo(kLastWritten));
}

CsvRules RulesOf(const DataFileOptions& options, char delimiter) {
  CsvRules rules{delimiter, {"", "NA", "NaN", "null"}, options.fTypes};
  rules.fNullTokens.insert(rules.fNullTokens.end(), options.fNullTokens.begin(),
                           options.fNullTokens.end());
  return rules;
}

std::unique_ptr<IArrowSource> ReadStandardInput(const DataFileOptions& options,
                                                CsvSource::Look look) {
  std::string text(std::istreambuf_iterator<char>(std::cin), {});
  return std::make_unique<CsvSource>("standard input", std::move(text), RulesOf(options, ','),
                                     look);
}

std::unique_ptr<IArrowSource> OpenSource(const std::string& path, const DataFileOptions& options,
                                         CsvSource::Look look) {
  if (path == kStandardInput) return ReadStandardInput(options, look);
  if (IsDatabaseAddress(path)) {
    return std::make_unique<DatabaseSource>(
        DatabaseRequest{path, options.fQuery, options.fDriverPlaces,
                        options.fbKeepOriginal || look == CsvSource::Look::kWhole});
  }
  if (!options.fQuery.empty()) {
    throw HostIOError(path, "", "a query needs a database, such as sqlite:FILE or duckdb:FILE");
  }
  const CellRules cells{options.fNullTokens, options.fTypes};
  if (IsSheetFile(path)) return OpenSheet(path, options.fSheet, cells);
  const Extension& extension = ExtensionOf(path);
  switch (extension.fFormat) {
    case Format::kParquet:
      return std::make_unique<ParquetSource>(path);
    case Format::kIpc:
      return std::make_unique<IpcSource>(path);
    case Format::kJson:
      return OpenJsonFile(path, cells);
    case Format::kSheets:
      return OpenSheet(path, options.fSheet, cells);
    case Format::kDelimited:
      break;
  }
  return std::make_unique<CsvSource>(path, RulesOf(options, extension.fDelimiter), look);
}

// Whether the cells of a file are too many to be held without need.
bool IsLarge(const std::string& path) {
  constexpr std::uintmax_t kLargeFile = std::uintmax_t{16} << 20;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return !error && size >= kLargeFile;
}

std::unique_ptr<DataTable> OpenForOnce(const std::string& path, const DataFileOptions& options) {
  if (!IsLarge(path)) return OpenDataFile(path, options, TableStorage::kMemory);
  try {
    return std::make_unique<StreamedTable>(OpenSource(path, options, CsvSource::Look::kStart));
  } catch (const HostIOError& error) {
    // What is not wrong with the data is that there is no room for a temporary file.
    if (error.File() == path) throw;
  }
  return OpenDataFile(path, options, TableStorage::kMemory);
}

}  // namespace

std::unique_ptr<IArrowSource> OpenDataSource(const std::string& path,
                                             const DataFileOptions& options) {
  return OpenSource(path, options, CsvSource::Look::kWhole);
}

std::unique_ptr<DataTable> OpenDataFile(const std::string& path, const DataFileOptions& options,
                                        TableStorage storage) {
  if (storage == TableStorage::kOnce) return OpenForOnce(path, options);
  if (path == kStandardInput && storage == TableStorage::kStreamed) {
    throw HostIOError("standard input", "", "it can be read only once, so it cannot be streamed");
  }
  const auto look =
      storage == TableStorage::kStreamed ? CsvSource::Look::kWhole : CsvSource::Look::kStart;
  std::unique_ptr<IArrowSource> source = OpenSource(path, options, look);
  if (storage == TableStorage::kMemory) {
    if (path == kStandardInput && !options.fbKeepOriginal) {
      return std::make_unique<MemoryTable>(*source);
    }
    return std::make_unique<MemoryTable>(std::move(source));
  }
  return std::make_unique<StreamedTable>(std::move(source));
}

void CheckDataFile(const std::string& path) {
  (void)WrittenExtensionOf(path);
  OutputFile::Check(path);
}

void WriteDataFile(DataTable& table, const std::string& path, const std::vector<int>* keys) {
  const Extension& extension = WrittenExtensionOf(path);
  const auto* text = dynamic_cast<const CsvSource*>(table.Source());
  if (extension.fFormat == Format::kDelimited && text != nullptr) {
    CsvRecords records = text->Records();
    return CopyCsv(records, keys, *AddedColumns(table), path, extension.fDelimiter);
  }
  std::vector<int> all(static_cast<std::size_t>(table.OwnColumnCount()));
  std::iota(all.begin(), all.end(), 0);
  SavedBatches batches(table, keys != nullptr ? *keys : all);
  switch (extension.fFormat) {
    case Format::kParquet:
      return WriteParquet(batches, path);
    case Format::kIpc:
      return WriteIpc(batches, path);
    default:
      return WriteCsv(batches, path, extension.fDelimiter);
  }
}

}  // namespace MCHost
