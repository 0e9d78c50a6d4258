#include "apps/predselect/OpenTable.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/Options.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/data/DataTable.h"
#include "host/data/KOVA_DataSource.h"
#include "host/data/MeasurementLevels.h"
#include "host/data/TableSchema.h"
#include "host/text/KeywordMatch.h"

namespace PredSelectApp {

namespace {

using MCHost::DataTable;

const std::vector<std::pair<std::string, KOVA_Variable::MeasurementLevel>> kLevels = {
    {"nominal", KOVA_Variable::kNominal},
    {"ordinal", KOVA_Variable::kOrdinal},
    {"scale", KOVA_Variable::kScale}};

// The variable's index; `option` is named when there is none.
int FindVariable(DataTable& table, const std::string& name, const std::string& option) {
  const int index = KOVA_DataSource(table).FindVariable(name);
  if (index >= 0) return index;
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(table.ColumnCount()));
  for (int i = 0; i < table.ColumnCount(); ++i) names.push_back(table.GetVariable(i).GetName());
  const std::string nearest = MCHost::NearestWord(name, names);
  throw UsageError(option + ": the data have no variable \"" + name + "\"" +
                   (nearest.empty() ? "." : "; did you mean \"" + nearest + "\"?"));
}

void ApplyLevel(DataTable& table, const std::string& option) {
  const std::size_t equals = option.rfind('=');
  const std::string word = equals == std::string::npos ? "" : option.substr(equals + 1);
  for (const auto& [name, level] : kLevels) {
    if (word != name) continue;
    KOVA_Variable& variable =
        table.GetVariable(FindVariable(table, option.substr(0, equals), "--level"));
    if (level == KOVA_Variable::kScale && !variable.IsNumeric()) {
      throw UsageError("--level: \"" + variable.GetName() + "\" holds texts and cannot be scale.");
    }
    variable.SetMeasurementLevel(level);
    return;
  }
  throw UsageError("--level " + option + ": give VARIABLE=nominal, ordinal or scale.");
}

void ApplyWeight(DataTable& table, const std::string& name) {
  const int index = FindVariable(table, name, "--weight");
  if (!table.GetVariable(index).IsNumeric()) {
    throw UsageError("--weight: \"" + name + "\" holds texts; a weight must be a number.");
  }
  table.SetWeightVarIndex(index);
}

}  // namespace

std::unique_ptr<DataTable> OpenTable(const DataOptions& options) {
  std::optional<MCHost::TableSchema> schema;
  MCHost::DataFileOptions file;
  file.fNullTokens = options.fNullTokens;
  if (!options.fSchema.empty()) {
    schema = MCHost::TableSchema::Read(options.fSchema);
    file.fTypes = schema->Types();
    const std::vector<std::string> nulls = schema->NullTokens();
    file.fNullTokens.insert(file.fNullTokens.end(), nulls.begin(), nulls.end());
  }
  const auto storage =
      options.fbStream ? MCHost::TableStorage::kStreamed : MCHost::TableStorage::kMemory;
  std::unique_ptr<DataTable> table = MCHost::OpenDataFile(options.fFile, file, storage);
  if (schema) schema->Apply(*table);
  for (const std::string& level : options.fLevels) ApplyLevel(*table, level);
  if (!options.fWeight.empty()) ApplyWeight(*table, options.fWeight);
  MCHost::SettleMeasurementLevels(*table);
  return table;
}

}  // namespace PredSelectApp
