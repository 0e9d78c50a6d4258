#include "host/arrow/DataFile.h"

#include <arrow/record_batch.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <numeric>
#include <optional>
#include <system_error>
#include <utility>

#include "host/arrow/ColumnarWriter.h"
#include "host/arrow/CsvSource.h"
#include "host/arrow/CsvWriter.h"
#include "host/arrow/IpcSource.h"
#include "host/arrow/ParquetSource.h"
#include "host/arrow/SavedBatches.h"
#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

constexpr char kStandardInput[] = "-";

// Throws HostIOError for a name that tells no format of data.
FileFormat DataFormatOf(const std::string& path) {
  const std::optional<FileFormat> format = FormatOfPath(path);
  std::string allowed;
  for (const FileFormatNames& known : FileFormats()) {
    if (!known.fbData) continue;
    if (format == known.fFormat) return known.fFormat;
    for (const char* ending : known.fEndings)
      allowed += (allowed.empty() ? "" : ", ") + std::string(ending);
  }
  throw HostIOError(path, "", "the extension does not tell a data format; known are " + allowed);
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
  const FileFormat format = DataFormatOf(path);
  if (format == FileFormat::kParquet) return std::make_unique<ParquetSource>(path);
  if (format == FileFormat::kArrow) return std::make_unique<IpcSource>(path);
  return std::make_unique<CsvSource>(path, RulesOf(options, DelimiterOf(format)), look);
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

DataTarget::DataTarget(std::string path) : fFormat(DataFormatOf(path)), fPath(std::move(path)) {}

void CheckDataFile(const DataTarget& target) { OutputFile::Check(target.fPath); }

void WriteDataFile(DataTable& table, const DataTarget& target, const std::vector<int>* keys) {
  const auto& [format, path] = target;
  const bool isDelimited = format == FileFormat::kCsv || format == FileFormat::kTsv;
  const auto* text = dynamic_cast<const CsvSource*>(table.Source());
  if (isDelimited && text != nullptr) {
    CsvRecords records = text->Records();
    return CopyCsv(records, keys, *AddedColumns(table), path, DelimiterOf(format));
  }
  std::vector<int> all(static_cast<std::size_t>(table.OwnColumnCount()));
  std::iota(all.begin(), all.end(), 0);
  SavedBatches batches(table, keys != nullptr ? *keys : all);
  if (format == FileFormat::kParquet) return WriteParquet(batches, path);
  if (format == FileFormat::kArrow) return WriteIpc(batches, path);
  WriteCsv(batches, path, DelimiterOf(format));
}

}  // namespace MCHost
