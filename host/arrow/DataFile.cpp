#include "host/arrow/DataFile.h"

#include <arrow/record_batch.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <numeric>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/arrow/ColumnarWriter.h"
#include "host/arrow/CsvSniffer.h"
#include "host/arrow/CsvSource.h"
#include "host/arrow/CsvWriter.h"
#include "host/arrow/IpcSource.h"
#include "host/arrow/ParquetSource.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/SpooledInput.h"
#include "host/arrow/TextBytes.h"
#include "host/data/MemoryTable.h"
#include "host/data/MissingValueCode.h"
#include "host/data/NullWords.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

constexpr char kStandardInput[] = "-";
constexpr char kStandardInputName[] = "standard input";
constexpr char kAllVariables[] = "*";

// A file that is open for reading as long as the object lives.
class Descriptor {
 public:
  explicit Descriptor(const std::string& path) : fDescriptor(open(path.c_str(), O_RDONLY)) {
    if (fDescriptor < 0) throw HostIOError(path, "", std::strerror(errno));
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(fDescriptor); }
  int Get() const { return fDescriptor; }

 private:
  int fDescriptor;
};

std::string EndOf(const std::string& path) {
  std::string end = path.substr(std::min(path.rfind('.'), path.size()));
  for (char& c : end) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return end;
}

// A format of data files, by the end of their names.
std::optional<FileFormat> FindDataFormat(const std::string& end) {
  const std::optional<FileFormat> format = FormatOfPath(end);
  const auto isIt = [&](const FileFormatNames& known) {
    return known.fbData && known.fFormat == format;
  };
  return std::ranges::any_of(FileFormats(), isIt) ? format : std::nullopt;
}

std::string KnownExtensions() {
  std::string known;
  for (const FileFormatNames& format : FileFormats()) {
    if (!format.fbData) continue;
    for (const char* end : format.fEndings) known += (known.empty() ? "" : ", ") + std::string(end);
  }
  return known;
}

// Of a file that is written.
FileFormat OutputFormatOf(const std::string& path) {
  if (const std::optional<FileFormat> known = FindDataFormat(EndOf(path))) return *known;
  throw HostIOError(path, "",
                    "the extension does not tell a data format; known are " + KnownExtensions());
}

// Of a file that is read, which may be packed or called anything where its format is said.
FileFormat InputFormatOf(const std::string& path, const DataFileOptions& options) {
  const std::string& said = options.fReading.fFormat;
  if (!said.empty()) {
    if (const std::optional<FileFormat> known = FindDataFormat("." + said)) return *known;
    throw HostIOError(path, "",
                      "--input-format " + said + ": known are the formats of " + KnownExtensions());
  }
  if (path == kStandardInput) return FileFormat::kCsv;
  constexpr std::string_view kPackings[] = {".gz", ".zst", ".bz2", ".xz", ".lz4"};
  const std::string end = EndOf(path);
  const bool isPacked =
      std::find(std::begin(kPackings), std::end(kPackings), end) != std::end(kPackings);
  const std::optional<FileFormat> known =
      FindDataFormat(isPacked ? EndOf(path.substr(0, path.size() - end.size())) : end);
  if (known) return *known;
  throw HostIOError(path, "",
                    "the extension does not tell a data format; known are " + KnownExtensions() +
                        "; --input-format says it of any file");
}

// A text that stands for no value, in all columns or in one.
CsvRules RulesOf(const DataFileOptions& options, char delimiter) {
  CsvRules rules{delimiter, {""}, options.fTypes};
  if (options.fReading.fbNullWords) {
    rules.fNullTokens.insert(rules.fNullTokens.end(), std::begin(kNullWords), std::end(kNullWords));
  }
  rules.fNullTokens.insert(rules.fNullTokens.end(), options.fNullTokens.begin(),
                           options.fNullTokens.end());
  for (const MissingCodes& missing : options.fReading.fMissing) {
    auto& tokens = missing.fVariable == kAllVariables ? rules.fNullTokens
                                                      : rules.fColumnNulls[missing.fVariable];
    std::remove_copy_if(missing.fCodes.begin(), missing.fCodes.end(), std::back_inserter(tokens),
                        IsNumericCode);
  }
  return rules;
}

std::unique_ptr<IArrowSource> OpenText(TextBytes bytes, const DataFileOptions& options,
                                       char delimiter, CsvSource::Look look) {
  CsvRules rules = RulesOf(options, delimiter);
  SniffCsv(bytes, options.fReading, rules);
  return std::make_unique<CsvSource>(std::move(bytes), std::move(rules), look);
}

// A file, or what was put by of an input that is called `name`.
std::unique_ptr<IArrowSource> OpenPath(const std::string& path, const std::string& name,
                                       FileFormat format, const DataFileOptions& options,
                                       CsvSource::Look look) {
  if (format == FileFormat::kParquet) return std::make_unique<ParquetSource>(path);
  if (format == FileFormat::kArrow) return std::make_unique<IpcSource>(path);
  return OpenText(TextBytes(path, name), options, DelimiterOf(format), look);
}

// What can be read only once.
std::unique_ptr<IArrowSource> OpenPipe(int descriptor, const std::string& name, FileFormat format,
                                       const DataFileOptions& options, CsvSource::Look look) {
  const bool isText = IsDelimited(format);
  SpooledInput input(descriptor, name, isText ? SpooledInput::kMostHeld : 0);
  if (!input.Path().empty()) return OpenPath(input.Path(), name, format, options, look);
  return OpenText(TextBytes::Of(name, input.TakeText()), options, DelimiterOf(format), look);
}

std::unique_ptr<IArrowSource> OpenSource(const std::string& path, const DataFileOptions& options,
                                         CsvSource::Look look) {
  const FileFormat format = InputFormatOf(path, options);
  if (path == kStandardInput) {
    return OpenPipe(STDIN_FILENO, kStandardInputName, format, options, look);
  }
  std::error_code error;
  if (!std::filesystem::is_fifo(path, error)) {
    return OpenPath(path, path, format, options, look);
  }
  const Descriptor pipe(path);
  return OpenPipe(pipe.Get(), path, format, options, look);
}

// Whether the cells of a file are too many to be held without need.
bool IsLarge(const std::string& path) {
  constexpr std::uintmax_t kLargeFile = std::uintmax_t{16} << 20;
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(path, error);
  return !error && size >= kLargeFile;
}

// A text between other delimiters than commas and tabs keeps them, called .csv.
char DelimiterOfCopy(char source, char target) {
  constexpr std::string_view kKept = ";|";
  return target == ',' && kKept.find(source) != std::string_view::npos ? source : target;
}

std::unique_ptr<DataTable> OpenKept(const std::string& path, const DataFileOptions& options) {
  std::unique_ptr<IArrowSource> source = OpenSource(path, options, CsvSource::Look::kStart);
  if (path == kStandardInput && !options.fbKeepOriginal) {
    return std::make_unique<MemoryTable>(*source);
  }
  return std::make_unique<MemoryTable>(std::move(source));
}

std::unique_ptr<DataTable> OpenForOnce(const std::string& path, const DataFileOptions& options) {
  if (!IsLarge(path)) return OpenKept(path, options);
  try {
    return std::make_unique<StreamedTable>(OpenSource(path, options, CsvSource::Look::kStart));
  } catch (const HostIOError& error) {
    // What is not wrong with the data is that there is no room for a temporary file.
    if (error.File() == path) throw;
  }
  return OpenKept(path, options);
}

std::unique_ptr<DataTable> OpenTable(const std::string& path, const DataFileOptions& options,
                                     TableStorage storage) {
  switch (storage) {
    case TableStorage::kMemory:
      return OpenKept(path, options);
    case TableStorage::kOnce:
      return OpenForOnce(path, options);
    case TableStorage::kStreamed:
      break;
  }
  return std::make_unique<StreamedTable>(OpenSource(path, options, CsvSource::Look::kWhole));
}

}  // namespace

std::unique_ptr<IArrowSource> OpenDataSource(const std::string& path,
                                             const DataFileOptions& options) {
  return OpenSource(path, options, CsvSource::Look::kWhole);
}

std::unique_ptr<DataTable> OpenDataFile(const std::string& path, const DataFileOptions& options,
                                        TableStorage storage) {
  try {
    return OpenTable(path, options, storage);
  } catch (const HostIOError& error) {
    if (!error.File().starts_with(SpooledInput::kPlace)) throw;
    throw HostIOError(path == kStandardInput ? kStandardInputName : path, error.Place(),
                      error.Reason());
  }
}

DataTarget::DataTarget(std::string path) : fFormat(OutputFormatOf(path)), fPath(std::move(path)) {}

void CheckDataFile(const DataTarget& target) { OutputFile::Check(target.fPath); }

void WriteDataFile(DataTable& table, const DataTarget& target, const std::vector<int>* keys) {
  const auto& [format, path] = target;
  const auto* text = dynamic_cast<const CsvSource*>(table.Source());
  if (IsDelimited(format) && text != nullptr && text->IsUsual()) {
    CsvRecords records = text->Records();
    const char delimiter = DelimiterOfCopy(text->Rules().fDelimiter, DelimiterOf(format));
    return CopyCsv(records, keys, *AddedColumns(table), path, delimiter);
  }
  std::vector<int> all(static_cast<std::size_t>(table.OwnColumnCount()));
  std::iota(all.begin(), all.end(), 0);
  SavedBatches batches(table, keys != nullptr ? *keys : all);
  if (format == FileFormat::kParquet) return WriteParquet(batches, path);
  if (format == FileFormat::kArrow) return WriteIpc(batches, path);
  WriteCsv(batches, path, DelimiterOf(format));
}

}  // namespace MCHost
