#include "apps/predselect/OpenTable.h"

#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/Options.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/data/DataTable.h"
#include "host/data/MeasurementLevels.h"
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

}  // namespace

std::unique_ptr<DataTable> OpenTable(const DataOptions& options) {
  PredSelect::TableOptions said;
  MCHost::DataFileOptions file;
  file.fNullTokens = options.fNullTokens;
  if (!options.fSchema.empty()) {
    said.fSchema = MCHost::TableSchema::Read(options.fSchema);
    file.fTypes = said.fSchema->Types();
    const std::vector<std::string> nulls = said.fSchema->NullTokens();
    file.fNullTokens.insert(file.fNullTokens.end(), nulls.begin(), nulls.end());
  }
  const auto storage =
      options.fbStream ? MCHost::TableStorage::kStreamed : MCHost::TableStorage::kMemory;
  std::unique_ptr<DataTable> table = MCHost::OpenDataFile(options.fFile, file, storage);
  for (const std::string& level : options.fLevels) said.fLevels.push_back(ReadLevel(level));
  said.fWeight = options.fWeight;
  PredSelect::PrepareTable(*table, said);
  return table;
}

}  // namespace PredSelectApp
