#include "operations/TableOptions.h"

#include <algorithm>
#include <memory>

#include "common/MissingValue.h"
#include "host/data/DataTable.h"
#include "host/data/KOVA_DataSource.h"
#include "host/data/MeasurementLevels.h"
#include "host/data/MissingValueCode.h"
#include "operations/NoVariable.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

using MCHost::DataTable;

// The variable's index; `option` is named when there is none.
int FindVariable(DataTable& table, const std::string& name, const std::string& option) {
  const int index = KOVA_DataSource(table).FindVariable(name);
  if (index < 0) throw RequestError(option, NoVariable(table, name));
  return index;
}

void ApplyLevel(DataTable& table, const std::string& name, KOVA_Variable::MeasurementLevel level) {
  KOVA_Variable& variable = table.GetVariable(FindVariable(table, name, "level"));
  if (level == KOVA_Variable::kScale && !variable.IsNumeric()) {
    throw RequestError("level", "\"" + variable.GetName() + "\" holds texts and cannot be scale.");
  }
  variable.SetMeasurementLevel(level);
}

void ApplyWeight(DataTable& table, const std::string& name) {
  const int index = FindVariable(table, name, "weight");
  if (!table.GetVariable(index).IsNumeric()) {
    throw RequestError("weight", "\"" + name + "\" holds texts; a weight must be a number.");
  }
  table.SetWeightVarIndex(index);
}

void AddMissing(KOVA_Variable& variable, const std::string& code) {
  KOVA_MissingValues& missing = variable.GetMissingValues();
  if (!variable.IsNumeric()) return missing.AddString(code);
  if (const auto number = MCHost::CodeAsNumber(code)) return missing.AddNumber(*number);
  const auto range = MCHost::CodeAsRange(code);
  if (!range) return;
  if (missing.HasRange()) {
    throw RequestError("missing",
                       "\"" + variable.GetName() + "\" can have one range of missing values only.");
  }
  missing.SetRange(range->fLow, range->fHigh);
}

void ApplyMissing(DataTable& table, const MCHost::MissingCodes& missing) {
  const bool isAll = missing.fVariable == "*";
  const int first = isAll ? 0 : FindVariable(table, missing.fVariable, "missing");
  const int last = isAll ? table.ColumnCount() : first + 1;
  for (int column = first; column < last; ++column) {
    for (const std::string& code : missing.fCodes) AddMissing(table.GetVariable(column), code);
  }
}

[[noreturn]] void RefusePart(const std::string& why) {
  throw RequestError("using", "the data are no part of what the ranges are of: " + why + ".");
}

bool HasValues(DataTable& table, int column) {
  const std::unique_ptr<MCHost::ITableScan> scan = table.Scan({column});
  while (const MCHost::TableBatch* batch = scan->Next()) {
    const MCHost::ColumnView& cells = batch->fColumns[0];
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      if (cells.fpNumbers != nullptr ? !MCMV::IsMissing(cells.fpNumbers[i])
                                     : cells.fpCodes[i] >= 0) {
        return true;
      }
    }
  }
  return false;
}

// A column without a value may be of any kind, and is then taken as the known one.
void CheckKind(DataTable& table, int column, const ColumnDictionary& known) {
  const KOVA_Variable& variable = table.GetVariable(column);
  if (variable.GetName() != known.fName) {
    RefusePart("column " + std::to_string(column + 1) + " is \"" + variable.GetName() +
               "\" here and \"" + known.fName + "\" there");
  }
  if (variable.IsNumeric() == known.IsNumeric()) return;
  if (!HasValues(table, column)) return table.TakeAsEmpty(column, MCHost::VariableOf(known));
  RefusePart("\"" + known.fName + "\" holds " + (known.IsNumeric() ? "texts" : "numbers") +
             " here and " + (known.IsNumeric() ? "numbers" : "texts") + " there");
}

void TakeWhole(DataTable& table, const std::shared_ptr<const MCHost::WholeTable>& whole) {
  const TableRanges& ranges = whole->fRanges;
  if (table.ColumnCount() != static_cast<int>(ranges.fColumns.size())) {
    RefusePart("there are " + std::to_string(table.ColumnCount()) + " columns here and " +
               std::to_string(ranges.fColumns.size()) + " there");
  }
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const ColumnDictionary& known = ranges.fColumns[static_cast<std::size_t>(i)].fDictionary;
    CheckKind(table, i, known);
    table.GetVariable(i) = MCHost::VariableOf(known);
  }
  table.SetWeightVarIndex(ranges.FindColumn(ranges.fWeight));
  table.SetWhole(whole);
}

}  // namespace

void PrepareTable(DataTable& table, const TableOptions& options) {
  if (options.fpWhole != nullptr) return TakeWhole(table, options.fpWhole);
  if (options.fSchema) options.fSchema->Apply(table);
  for (const MCHost::MissingCodes& missing : options.fMissing) ApplyMissing(table, missing);
  for (const auto& [name, level] : options.fLevels) ApplyLevel(table, name, level);
  if (!options.fWeight.empty()) ApplyWeight(table, options.fWeight);
  MCHost::SettleMeasurementLevels(table);
}

std::vector<int> KeyColumns(DataTable& table, const std::vector<std::string>& names) {
  std::vector<int> columns;
  for (const std::string& name : names) {
    const int column = FindVariable(table, name, "id");
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
      throw RequestError("id", "\"" + name + "\" comes twice.");
    }
    columns.push_back(column);
  }
  return columns;
}

}  // namespace PredSelect
