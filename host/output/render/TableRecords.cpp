#include "host/output/render/TableRecords.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>

#include "host/output/ShowText.h"

namespace MCHost {

namespace {

std::string Joined(const std::string& left, const std::string& right) {
  return left.empty() ? right : left + ": " + right;
}

// The shortest text that reads back as the same number.
std::string NumberText(double value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), value).ptr};
}

void AddCell(const OutputCell* cell, ArrowCells& cells) {
  const auto* number = cell != nullptr ? std::get_if<double>(&cell->fValue) : nullptr;
  const auto* text = cell != nullptr ? std::get_if<OutputText>(&cell->fValue) : nullptr;
  if (number != nullptr && cells.IsNumeric()) {
    cells.AddNumbers(number, 1);
  } else if (number != nullptr) {
    cells.AddText(NumberText(*number));
  } else if (text != nullptr) {
    cells.AddText(TextId(*text));
  } else {
    cells.AddMissing();
  }
}

bool IsText(const OutputCell* cell) {
  return cell != nullptr && std::holds_alternative<OutputText>(cell->fValue);
}

const OutputText& LabelOf(const OutputDimension& dimension, int category) {
  return dimension.fCategories[static_cast<std::size_t>(category)].fLabel;
}

}  // namespace

TableRecords::TableRecords(const OutputTable& table)
    : fMetadata{{"title", TextId(table.fTitle)},
                {"label", ShowText(table.fTitle)},
                {"subtype", table.fSubtype}} {
  const std::vector<AxisEntry> rows = AxisEntries(table, OutputDimension::kRow);
  const std::vector<AxisEntry> layers = AxisEntries(table, OutputDimension::kLayer);
  std::vector<Record> records;
  for (const AxisEntry& layer : layers) {
    for (const AxisEntry& row : rows) records.push_back({&row, &layer});
  }
  fNRecords = records.size();
  AddKeys(table, OutputDimension::kRow, records);
  AddKeys(table, OutputDimension::kLayer, records);
  AddValues(table, records);
}

void TableRecords::AddKeys(const OutputTable& table, OutputDimension::Axis axis,
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

void TableRecords::AddKey(const OutputDimension& dimension, const std::vector<int>& leaves) {
  std::vector<std::vector<int>> groups;  // above each record's category, from the outermost
  std::size_t depth = 0;
  for (const int leaf : leaves) {
    groups.push_back(dimension.PathTo(leaf));
    groups.back().pop_back();
    depth = std::max(depth, groups.back().size());
  }
  const std::string name = TextId(dimension.fName);
  for (std::size_t level = 0; level < depth; ++level) {
    ArrowCells& cells = AddField(name + ": Group " + std::to_string(level + 1), false, {});
    for (const std::vector<int>& path : groups) {
      if (level < path.size()) {
        cells.AddText(TextId(LabelOf(dimension, path[level])));
      } else {
        cells.AddMissing();
      }
    }
  }
  ArrowCells& cells = AddField(name, false, {{"label", ShowText(dimension.fName)}});
  for (const int leaf : leaves) cells.AddText(TextId(LabelOf(dimension, leaf)));
}

void TableRecords::AddValues(const OutputTable& table, const std::vector<Record>& records) {
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
    ArrowCells& filled = AddField(name.empty() ? "Value" : name, numeric, {{"label", label}});
    for (const OutputCell* cell : cells) AddCell(cell, filled);
  }
}

ArrowCells& TableRecords::AddField(const std::string& name, bool numeric, ArrowMetadata metadata) {
  std::string unique = name;
  for (int n = 2; !fNames.insert(unique).second; ++n) unique = name + " " + std::to_string(n);
  fFields.push_back({std::move(unique), numeric, std::move(metadata)});
  return fColumns.emplace_back(numeric);
}

std::size_t TableRecords::Next(std::vector<ArrowCells>& columns) {
  columns = std::move(fColumns);
  return std::exchange(fNRecords, 0);
}

}  // namespace MCHost
