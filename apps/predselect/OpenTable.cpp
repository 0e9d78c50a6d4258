#include "apps/predselect/OpenTable.h"

#include <cstdlib>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/Options.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/arrow/DatabaseAddress.h"
#include "host/data/DataTable.h"
#include "host/data/MeasurementLevels.h"
#include "host/session/HostIOError.h"
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

std::unique_ptr<DataTable> OpenFile(const DataOptions& options,
                                    const MCHost::DataFileOptions& said) {
  try {
    return MCHost::OpenDataFile(options.fFile, said, StorageOf(options));
  } catch (const std::bad_alloc&) {
    throw MCHost::HostIOError(MCHost::WithoutPassword(options.fFile), "",
                              std::string("there is not enough memory to read the data") +
                                  (options.fbStream ? "" : "; --stream does not keep them"));
  }
}

// Where drivers of databases are looked for: what the user says, then the environment at work.
std::vector<std::string> DriverPlaces(const std::string& said) {
  std::vector<std::string> places;
  if (!said.empty()) places.push_back(said);
  for (const char* name : {"VIRTUAL_ENV", "CONDA_PREFIX"}) {
    const char* const folder = std::getenv(name);
    if (folder == nullptr) continue;
    places.emplace_back(folder);
    places.push_back(std::string(folder) + "/lib");
  }
  return places;
}

}  // namespace

std::unique_ptr<DataTable> OpenTable(const DataOptions& options) {
  PredSelect::TableOptions said;
  MCHost::DataFileOptions file;
  file.fNullTokens = options.fNullTokens;
  file.fSheet = options.fSheet;
  file.fQuery = options.fQuery;
  file.fDriverPlaces = DriverPlaces(options.fDriver);
  file.fbKeepOriginal = options.fbSaved;
  if (!options.fSchema.empty()) {
    said.fSchema = MCHost::TableSchema::Read(options.fSchema);
    file.fTypes = said.fSchema->Types();
    const std::vector<std::string> nulls = said.fSchema->NullTokens();
    file.fNullTokens.insert(file.fNullTokens.end(), nulls.begin(), nulls.end());
  }
  std::unique_ptr<DataTable> table = OpenFile(options, file);
  for (const std::string& level : options.fLevels) said.fLevels.push_back(ReadLevel(level));
  said.fWeight = options.fWeight;
  PredSelect::PrepareTable(*table, said);
  return table;
}

}  // namespace PredSelectApp
