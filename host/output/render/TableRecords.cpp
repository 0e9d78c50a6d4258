#include "host/output/render/TableRecords.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "common/MissingValue.h"
#include "host/output/OutputTable.h"
#include "host/output/ShowText.h"
#include "host/output/render/TableAxis.h"
#include "host/text/CsvText.h"

namespace MCHost {

namespace {

std::string Joined(const std::string& left, const std::string& right) {
  return left.empty() ? right : left + ": " + right;
}

void AddCell(const OutputCell* cell, FlatColumn& column) {
  const auto* number = cell != nullptr ? std::get_if<double>(&cell->fValue) : nullptr;
  const auto* text = cell != nullptr ? std::get_if<OutputText>(&cell->fValue) : nullptr;
  if (number != nullptr && column.fbNumeric) {
    column.fNumbers.push_back(*number);
  } else if (number != nullptr) {
    AppendNumber(column.fTexts.emplace_back("").value(), *number);
  } else if (text != nullptr) {
    column.fTexts.emplace_back(TextId(*text));
  } else {
    column.AddMissing();
  }
}

bool IsText(const OutputCell* cell) {
  return cell != nullptr && std::holds_alternative<OutputText>(cell->fValue);
}

const OutputText& LabelOf(const OutputDimension& dimension, int category) {
  return dimension.fCategories[static_cast<std::size_t>(category)].fLabel;
}

class RecordsMaker {
 public:
  FlatRecords Make(const OutputTable& table);

 private:
  struct Record {
    const AxisEntry* fpRow;
    const AxisEntry* fpLayer;
  };

  void AddKeys(const OutputTable& table, OutputDimension::Axis axis,
               const std::vector<Record>& records);
  void AddKey(const OutputDimension& dimension, const std::vector<int>& leaves);
  void AddValues(const OutputTable& table, const std::vector<Record>& records);
  FlatColumn& AddColumn(const std::string& name, bool numeric, std::string label);

  FlatRecords fRecords;
  std::set<std::string> fNames;
};

FlatRecords RecordsMaker::Make(const OutputTable& table) {
  fRecords.fSubtype = table.fSubtype;
  fRecords.fTitle = TextId(table.fTitle);
  fRecords.fLabel = ShowText(table.fTitle);
  const std::vector<AxisEntry> rows = AxisEntries(table, OutputDimension::kRow);
  const std::vector<AxisEntry> layers = AxisEntries(table, OutputDimension::kLayer);
  std::vector<Record> records;
  for (const AxisEntry& layer : layers) {
    for (const AxisEntry& row : rows) records.push_back({&row, &layer});
  }
  AddKeys(table, OutputDimension::kRow, records);
  AddKeys(table, OutputDimension::kLayer, records);
  AddValues(table, records);
  return std::move(fRecords);
}

void RecordsMaker::AddKeys(const OutputTable& table, OutputDimension::Axis axis,
                           const std::vector<Record>& records) {
  const std::vector<std::size_t> dimensions = AxisDimensions(table, axis);
  for (std::size_t i = 0; i < dimensions.size(); ++i) {
    std::vector<int> leaves;
    for (const Record& record : records) {
      const AxisEntry& entry = axis == OutputDimension::kRow ? *record.fpRow : *record.fpLayer;
      leaves.push_back(entry.fLeaves[i]);
    }
    AddKey(table.fDimensions[dimensions[i]], leaves);
  }
}

void RecordsMaker::AddKey(const OutputDimension& dimension, const std::vector<int>& leaves) {
  std::vector<std::vector<int>> groups;  // above each record's category, from the outermost
  std::size_t depth = 0;
  for (const int leaf : leaves) {
    groups.push_back(dimension.PathTo(leaf));
    groups.back().pop_back();
    depth = std::max(depth, groups.back().size());
  }
  const std::string name = TextId(dimension.fName);
  for (std::size_t level = 0; level < depth; ++level) {
    FlatColumn& column = AddColumn(name + ": Group " + std::to_string(level + 1), false, "");
    for (const std::vector<int>& path : groups) {
      if (level < path.size()) {
        column.fTexts.emplace_back(TextId(LabelOf(dimension, path[level])));
      } else {
        column.AddMissing();
      }
    }
  }
  FlatColumn& column = AddColumn(name, false, ShowText(dimension.fName));
  for (const int leaf : leaves) column.fTexts.emplace_back(TextId(LabelOf(dimension, leaf)));
}

void RecordsMaker::AddValues(const OutputTable& table, const std::vector<Record>& records) {
  std::map<std::vector<int>, const OutputCell*> byPlace;
  for (const OutputCell& cell : table.fCells) byPlace[cell.fPlace] = &cell;
  std::vector<const OutputCell*> cells(records.size());
  for (const AxisEntry& column : AxisEntries(table, OutputDimension::kColumn)) {
    for (std::size_t i = 0; i < records.size(); ++i) {
      const auto found =
          byPlace.find(CellPlace(table, *records[i].fpRow, column, *records[i].fpLayer));
      cells[i] = found == byPlace.end() ? nullptr : found->second;
    }
    std::string name;
    std::string label;
    for (const AxisEntry::Heading& heading : column.fHeadings) {
      if (heading.fCategory < 0) continue;  // the name of the dimension
      const auto dimension = static_cast<std::size_t>(heading.fDimension);
      const OutputText& text = LabelOf(table.fDimensions[dimension], heading.fCategory);
      name = Joined(name, TextId(text));
      label = Joined(label, ShowText(text));
    }
    const bool numeric = std::none_of(cells.begin(), cells.end(), IsText);
    FlatColumn& filled = AddColumn(name.empty() ? "Value" : name, numeric, std::move(label));
    for (const OutputCell* cell : cells) AddCell(cell, filled);
  }
}

FlatColumn& RecordsMaker::AddColumn(const std::string& name, bool numeric, std::string label) {
  std::string unique = name;
  for (int n = 2; !fNames.insert(unique).second; ++n) unique = name + " " + std::to_string(n);
  return fRecords.fColumns.emplace_back(
      FlatColumn{std::move(unique), std::move(label), numeric, {}, {}});
}

}  // namespace

FlatRecords TableRecords(const OutputTable& table) { return RecordsMaker().Make(table); }

}  // namespace MCHost
