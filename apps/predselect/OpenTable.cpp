#include "apps/predselect/OpenTable.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/MemorySize.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/arrow/DatabaseAddress.h"
#include "host/data/DataTable.h"
#include "host/data/MeasurementLevels.h"
#include "host/data/ReadingScope.h"
#include "host/data/WholeTable.h"
#include "host/session/HostFunctions.h"
#include "host/session/HostIOError.h"
#include "operations/FreeMemory.h"
#include "operations/NoVariable.h"
#include "operations/RequestError.h"
#include "operations/StateFile.h"
#include "operations/TableOptions.h"

namespace PredSelectApp {

namespace {

using MCHost::DataTable;

// "variable=level".
std::pair<std::string, KOVA_Variable::MeasurementLevel> ReadLevel(const std::string& option) {
  const std::size_t equals = option.rfind('=');
  const auto level = equals == std::string::npos
                         ? KOVA_Variable::kUnknown
                         : MCHost::FindMeasurementLevel(option.substr(equals + 1));
  if (level == KOVA_Variable::kUnknown) {
    throw UsageError("--level " + option + ": give VARIABLE=nominal, ordinal or scale.");
  }
  return {option.substr(0, equals), level};
}

MCHost::TableStorage StorageOf(const DataOptions& options) {
  if (options.fbStream) return MCHost::TableStorage::kStreamed;
  return options.fbOnce ? MCHost::TableStorage::kOnce : MCHost::TableStorage::kMemory;
}

// Before the cells are read, which may take long.
void CheckNames(const DataOptions& options, const std::vector<std::string>& columns) {
  for (const auto& [option, name] : options.fNames) {
    // Those beyond ASCII may differ in case, and are looked for later.
    const auto isMeant = [&wanted = name](const std::string& column) {
      return AreStringsEqualCase(column, wanted);
    };
    const bool isAscii = std::ranges::all_of(name, [](char c) { return c > 0; });
    if (!isAscii) continue;
    if (std::ranges::any_of(columns, isMeant)) continue;
    const std::string text = PredSelect::NoVariable(columns, name);
    throw option.empty() ? PredSelect::RequestError(text) : PredSelect::RequestError(option, text);
  }
}

std::unique_ptr<DataTable> OpenFile(const DataOptions& options, const MCHost::DataFileOptions& said,
                                    ProgressLine& progress) {
  const std::string reading = "Reading " + options.fFile;
  progress.Show(reading);
  const MCHost::ReadingScope scope(
      [&options](const std::vector<std::string>& names) { CheckNames(options, names); },
      [&](std::int64_t cells) {
        progress.Show(reading + ": " + std::to_string(cells / 1'000'000) + " million cells");
      });
  try {
    return MCHost::OpenDataFile(options.fFile, said, StorageOf(options));
  } catch (const std::bad_alloc&) {
    throw MCHost::HostIOError(MCHost::WithoutPassword(options.fFile), "",
                              std::string("there is not enough memory to read the data") +
                                  (options.fbStream ? "" : "; --stream does not keep them"));
  }
}

// Where drivers of databases are looked for besides the place that the user says.
std::vector<std::string> DriverPlaces() {
  std::vector<std::string> places;
  for (const char* name : {"PREDSELECT_DRIVER", "VIRTUAL_ENV", "CONDA_PREFIX"}) {
    const char* const place = std::getenv(name);
    if (place != nullptr) places.emplace_back(place);
  }
  return places;
}

// Levels, labels, missing values and weight come from the ranges.
void RefuseBesideUsing(const DataOptions& options) {
  const std::pair<bool, const char*> given[] = {{!options.fSchema.empty(), "--schema"},
                                                {!options.fLevels.empty(), "--level"},
                                                {!options.fWeight.empty(), "--weight"},
                                                {!options.fReading.fMissing.empty(), "--missing"}};
  for (const auto& [isGiven, name] : given) {
    if (!isGiven) continue;
    throw UsageError(std::string(name) +
                     ": the ranges of --using say that already; give it to predselect range.");
  }
}

// The ranges, and how texts in files are read by them.
std::shared_ptr<const MCHost::WholeTable> UseRanges(const DataOptions& options,
                                                    MCHost::DataFileOptions& file) {
  RefuseBesideUsing(options);
  const ComponentFile state = PredSelect::LoadState(options.fUsing);
  if (!state.fRanges) {
    throw PredSelect::RequestError(
        "using", options.fUsing + " holds no ranges; predselect range writes them.");
  }
  auto whole = std::make_shared<MCHost::WholeTable>();
  whole->fName = options.fUsing;
  whole->fRanges = *state.fRanges;
  whole->fPart = options.fPart;
  if (options.fPart >= 0 && whole->FirstCase() < 0) {
    throw PredSelect::RequestError(
        "part", options.fUsing + " knows no part " + std::to_string(options.fPart) + ".");
  }
  for (const ColumnRange& column : whole->fRanges.fColumns) {
    // Texts that look like numbers here need not do so elsewhere.
    const ColumnDictionary& known = column.fDictionary;
    if (!known.IsNumeric()) file.fTypes[known.fName] = MCHost::FieldType::kString;
  }
  return whole;
}

}  // namespace

std::unique_ptr<DataTable> OpenTable(const DataOptions& options, ProgressLine& progress) {
  PredSelect::TableOptions said;
  MCHost::DataFileOptions file;
  file.fNullTokens = options.fNullTokens;
  file.fbKeepOriginal = options.fbSaved;
  file.fReading = options.fReading;
  file.fDriverPlaces = DriverPlaces();
  file.fMaxKeptBytes = options.fMaxKeptBytes;
  said.fMissing = options.fReading.fMissing;
  if (!options.fSchema.empty()) {
    said.fSchema = MCHost::TableSchema::Read(options.fSchema);
    file.fTypes = said.fSchema->Types();
    file.fColumnNulls = said.fSchema->ColumnNulls();
    const std::vector<std::string> nulls = said.fSchema->NullTokens();
    file.fNullTokens.insert(file.fNullTokens.end(), nulls.begin(), nulls.end());
  }
  if (!options.fUsing.empty()) said.fpWhole = UseRanges(options, file);
  std::unique_ptr<DataTable> table = OpenFile(options, file, progress);
  for (const std::string& level : options.fLevels) said.fLevels.push_back(ReadLevel(level));
  said.fWeight = options.fWeight;
  PredSelect::PrepareTable(*table, said);
  progress.Clear();
  return table;
}

double MemoryForCases(const Options& options, const DataTable& table) {
  if (options.fMemory <= 0.0) return PredSelect::AutomaticMemory();
  return MemoryBeside(table.KeptBytes(), options.fMemory);
}

}  // namespace PredSelectApp
