#include "host/arrow/DataFile.h"

#include <arrow/record_batch.h>
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <numeric>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/arrow/ColumnarWriter.h"
#include "host/arrow/CsvSniffer.h"
#include "host/arrow/CsvSource.h"
#include "host/arrow/CsvWriter.h"
#include "host/arrow/DataParts.h"
#include "host/arrow/DatabaseAddress.h"
#include "host/arrow/DatabaseSource.h"
#include "host/arrow/FileContent.h"
#include "host/arrow/IpcSource.h"
#include "host/arrow/JoinedSource.h"
#include "host/arrow/JsonSource.h"
#include "host/arrow/ParquetSource.h"
#include "host/arrow/RecordWriter.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/SheetSource.h"
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

// A format of data that are read, by the end of their names.
std::optional<FileFormat> FindInputFormat(const std::string& end) {
  const std::optional<FileFormat> format = FormatOfPath(end);
  return format && NamesOf(*format).fbRead ? format : std::nullopt;
}

bool IsJson(FileFormat format) {
  return format == FileFormat::kJson || format == FileFormat::kJsonLines;
}

// Of a file that is written.
FileFormat OutputFormatOf(const std::string& path) {
  const std::optional<FileFormat> known = FormatOfPath(path);
  if (known && NamesOf(*known).fbWritten) return *known;
  throw HostIOError(
      path, "",
      std::string(known && NamesOf(*known).fbRead ? "tables are not written in this format"
                                                  : "the extension does not tell a data format") +
          "; known are " + EndingsOf(&FileFormatNames::fbWritten));
}

bool IsPipe(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_fifo(path, error);
}

// How more files of text are called, besides those that are written.
constexpr std::pair<std::string_view, FileFormat> kMoreTexts[] = {
    {".txt", FileFormat::kCsv}, {".dat", FileFormat::kCsv}, {".tab", FileFormat::kTsv}};

// Of a file that is read, by the end of its name.
std::optional<FileFormat> FormatOfEnd(const std::string& end) {
  for (const auto& [text, format] : kMoreTexts) {
    if (end == text) return format;
  }
  return FindInputFormat(end);
}

constexpr std::string_view kPackings[] = {".gz", ".zst", ".bz2", ".xz", ".lz4"};

// How files are called that can be read.
std::vector<std::string> InputEndings() {
  std::vector<std::string> endings;
  for (const FileFormatNames& known : FileFormats()) {
    if (!known.fbRead) continue;
    endings.insert(endings.end(), known.fEndings.begin(), known.fEndings.end());
    if (!IsDelimited(known.fFormat) && !IsJson(known.fFormat)) continue;
    for (const char* ending : known.fEndings) {
      for (const std::string_view packing : kPackings) {
        endings.push_back(ending + std::string(packing));
      }
    }
  }
  return endings;
}

// Of a file that is read, which may be packed or called anything where its format is said.
FileFormat InputFormatOf(const std::string& path, const DataFileOptions& options) {
  const std::string& said = options.fReading.fFormat;
  if (!said.empty()) {
    if (const std::optional<FileFormat> known = FindInputFormat("." + said)) return *known;
    throw HostIOError(path, "",
                      "--input-format " + said + ": known are the formats of " +
                          EndingsOf(&FileFormatNames::fbRead));
  }
  if (path == kStandardInput) return FileFormat::kCsv;
  if (const std::optional<FileFormat> content = FormatOfContent(path)) return *content;
  const std::string end = EndOf(path);
  const bool isPacked =
      std::find(std::begin(kPackings), std::end(kPackings), end) != std::end(kPackings);
  const std::optional<FileFormat> known =
      FormatOfEnd(isPacked ? EndOf(path.substr(0, path.size() - end.size())) : end);
  if (known) return *known;
  if (IsPipe(path)) return FileFormat::kCsv;
  throw HostIOError(path, "",
                    "the extension does not tell a data format; known are " +
                        EndingsOf(&FileFormatNames::fbRead) +
                        "; --input-format says it of any file");
}

// A text that stands for no value, in all columns or in one.
CsvRules RulesOf(const DataFileOptions& options, char delimiter) {
  CsvRules rules{delimiter, {""}, options.fTypes};
  rules.fColumnNulls = options.fColumnNulls;
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

// The same for cells that say themselves what they are.
CellRules CellRulesOf(const DataFileOptions& options) {
  CsvRules rules = RulesOf(options, ',');
  return {std::move(rules.fNullTokens), std::move(rules.fTypes), std::move(rules.fColumnNulls)};
}

std::unique_ptr<IArrowSource> OpenJson(TextBytes bytes, const DataFileOptions& options) {
  bytes.SetEncoding(options.fReading.fEncoding.value_or(bytes.Encoding()));
  return OpenJsonSource(bytes, CellRulesOf(options));
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
  if (format == FileFormat::kSheets) {
    return OpenSheet(path, name, options.fReading.fSheet, CellRulesOf(options));
  }
  if (IsJson(format)) return OpenJson(TextBytes(path, name), options);
  return OpenText(TextBytes(path, name), options, DelimiterOf(format), look);
}

// What can be read only once.
std::unique_ptr<IArrowSource> OpenPipe(int descriptor, const std::string& name, FileFormat format,
                                       const DataFileOptions& options, CsvSource::Look look) {
  const bool isText = IsDelimited(format) || IsJson(format);
  SpooledInput input(descriptor, name, isText ? SpooledInput::kMostHeld : 0);
  if (!input.Path().empty()) return OpenPath(input.Path(), name, format, options, look);
  std::string text = input.TakeText();
  CheckTextContent(text, name);
  TextBytes bytes = TextBytes::Of(name, std::move(text));
  if (IsJson(format)) return OpenJson(std::move(bytes), options);
  return OpenText(std::move(bytes), options, DelimiterOf(format), look);
}

std::unique_ptr<IArrowSource> OpenDatabase(const std::string& address,
                                           const DataFileOptions& options, CsvSource::Look look) {
  DatabaseRequest request{address, options.fReading.fQuery, options.fDriverPlaces};
  if (!options.fReading.fDriver.empty()) request.fDriverPlaces = {options.fReading.fDriver};
  // Streamed, or to be saved, they are needed more than once.
  request.fbAgain = options.fbKeepOriginal || look == CsvSource::Look::kWhole;
  return std::make_unique<DatabaseSource>(request);
}

std::unique_ptr<IArrowSource> OpenOne(const std::string& path, const DataFileOptions& options,
                                      CsvSource::Look look) {
  const FileFormat format = InputFormatOf(path, options);
  if (path == kStandardInput) {
    return OpenPipe(STDIN_FILENO, kStandardInputName, format, options, look);
  }
  if (!IsPipe(path)) return OpenPath(path, path, format, options, look);
  const Descriptor pipe(path);
  return OpenPipe(pipe.Get(), path, format, options, look);
}

std::unique_ptr<IArrowSource> OpenSource(const std::string& path, const DataFileOptions& options,
                                         CsvSource::Look look) {
  if (IsDatabaseAddress(path)) return OpenDatabase(path, options, look);
  if (!options.fReading.fQuery.empty()) {
    throw HostIOError(path, "", "a query needs a database, such as sqlite:FILE or duckdb:FILE");
  }
  const std::vector<DataPart> parts = FindDataParts(path, InputEndings());
  if (parts.empty()) return OpenOne(path, options, look);
  const auto open = [options, look](const DataPart& part, const std::set<std::string>& texts) {
    DataFileOptions own = options;
    for (const std::string& text : texts) own.fTypes[text] = FieldType::kString;
    return OpenOne(part.fPath, own, look);
  };
  return std::make_unique<JoinedSource>(path, parts, open);
}

// Whether the cells of a file are too many to be held without need.
bool IsLarge(const std::string& path) {
  constexpr std::uintmax_t kLargeFile = std::uintmax_t{16} << 20;
  std::uintmax_t size = 0;
  for (const std::string& file : FilesOfData(path)) {
    std::error_code error;
    const std::uintmax_t own = std::filesystem::file_size(file, error);
    if (!error) size += own;
  }
  return size >= kLargeFile;
}

// A text between other delimiters than commas and tabs keeps them, called .csv.
char DelimiterOfCopy(char source, char target) {
  constexpr std::string_view kKept = ";|";
  return target == ',' && kKept.find(source) != std::string_view::npos ? source : target;
}

std::unique_ptr<DataTable> OpenKept(const std::string& path, const DataFileOptions& options) {
  std::unique_ptr<IArrowSource> source = OpenSource(path, options, CsvSource::Look::kStart);
  try {
    auto table = std::make_unique<MemoryTable>(*source, options.fMaxKeptBytes);
    const bool isLastReading = path == kStandardInput && !options.fbKeepOriginal;
    if (!isLastReading) table->KeepSource(std::move(source));
    return table;
  } catch (const MemoryTable::Outgrown&) {
    malloc_trim(0);  // small pieces are not given back by themselves
  }
  return std::make_unique<StreamedTable>(std::move(source));
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

// Of sources whose columns are what they are: a code of a named column of numbers that is none can
// match nothing.
void CheckMissingCodes(const DataTable& table, const ReadingOptions& said) {
  const IArrowSource* source = table.Source();
  const bool isTyped = source != nullptr && source->HasTypes();
  for (int column = 0; isTyped && column < table.OwnColumnCount(); ++column) {
    const KOVA_Variable& variable = table.GetVariable(column);
    for (const MissingCodes& missing : said.fMissing) {
      if (!variable.IsNumeric() || missing.fVariable != variable.GetName()) continue;
      const auto& codes = missing.fCodes;
      const auto text = std::find_if_not(codes.begin(), codes.end(), IsNumericCode);
      if (text == codes.end()) continue;
      throw HostIOError(source->Name(), "column \"" + variable.GetName() + "\"",
                        "--missing \"" + missing.fVariable + "=" + *text +
                            "\" names a text, and the column holds numbers");
    }
  }
}

}  // namespace

std::unique_ptr<IArrowSource> OpenDataSource(const std::string& path,
                                             const DataFileOptions& options) {
  return OpenSource(path, options, CsvSource::Look::kWhole);
}

std::unique_ptr<DataTable> OpenDataFile(const std::string& path, const DataFileOptions& options,
                                        TableStorage storage) {
  try {
    std::unique_ptr<DataTable> table = OpenTable(path, options, storage);
    if (table->OwnColumnCount() == 0) throw HostIOError(path, "", "there are no columns in it");
    CheckMissingCodes(*table, options.fReading);
    return table;
  } catch (const HostIOError& error) {
    if (!error.File().starts_with(SpooledInput::kPlace)) throw;
    throw HostIOError(path == kStandardInput ? kStandardInputName : path, error.Place(),
                      error.Reason());
  }
}

std::vector<std::string> FilesOfData(const std::string& path) {
  try {
    if (IsDatabaseAddress(path)) {
      const DatabaseAddress address = ReadDatabaseAddress(path);
      if (address.fpKind->fPlace != DatabaseKind::kServer) return {address.fPlace};
      return {};
    }
    std::vector<std::string> files;
    for (const DataPart& part : FindDataParts(path, InputEndings())) files.push_back(part.fPath);
    if (!files.empty()) return files;
  } catch (const HostIOError&) {
    // Whoever opens it is told.
  }
  return {path};
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
  if (format == FileFormat::kArrow) {
    if (WriteIpc(batches, path, Dictionaries::kKept)) return;
    SavedBatches again(table, keys != nullptr ? *keys : all);
    WriteIpc(again, path, Dictionaries::kAsValues);
    return;
  }
  if (IsDelimited(format)) {
    const char own = text != nullptr ? text->Rules().fDelimiter : DelimiterOf(format);
    return WriteCsv(batches, path, DelimiterOfCopy(own, DelimiterOf(format)));
  }
  WriteRecordLines(batches, path, format);
}

}  // namespace MCHost
