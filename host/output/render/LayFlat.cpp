#include "host/output/render/LayFlat.h"

#include <algorithm>
#include <charconv>
#include <set>
#include <utility>

#include "common/MissingValue.h"
#include "host/output/OutputTable.h"
#include "host/output/render/TableRecords.h"

namespace MCHost {

namespace {

// The items of a list cell; null for any other.
const std::vector<OutputText>* ItemsOf(const OutputCell& cell) {
  const auto* text = std::get_if<OutputText>(&cell.fValue);
  const bool isList = text != nullptr && text->fArguments.size() == 1;
  return isList && !text->fArguments[0].fItems.empty() ? &text->fArguments[0].fItems : nullptr;
}

bool ReadNumber(const OutputText& text, double& number) {
  const char* end = text.fKey.data() + text.fKey.size();
  return std::from_chars(text.fKey.data(), end, number).ptr == end && !text.fKey.empty();
}

bool IsNumberList(const OutputCell& cell) {
  const std::vector<OutputText>* items = ItemsOf(cell);
  double number = 0.0;
  return items != nullptr && std::all_of(items->begin(), items->end(), [&](const auto& item) {
           return item.fKind == OutputText::kLiteral && ReadNumber(item, number);
         });
}

// The place of the only dimension on the columns, -1 where there are more of them, or none.
int OnlyColumns(const OutputTable& table) {
  int found = -1;
  for (std::size_t i = 0; i < table.fDimensions.size(); ++i) {
    if (table.fDimensions[i].fAxis != OutputDimension::kColumn) continue;
    if (found >= 0) return -1;
    found = static_cast<int>(i);
  }
  return found;
}

bool IsValue(const OutputCategory& category) {
  return !category.fbGroup && category.fLabel.fKind == OutputText::kValue;
}

bool HasValues(const OutputDimension& dimension) {
  return std::any_of(dimension.fCategories.begin(), dimension.fCategories.end(), IsValue);
}

// Puts so many copies in the place of each category, none of one that is to go with its cells, and
// moves the cells to the first copy. REQUIRES: what stays has no parent that goes.
void Repeat(OutputTable& table, int dimension, const std::vector<int>& times) {
  const auto d = static_cast<std::size_t>(dimension);
  std::vector<OutputCategory>& categories = table.fDimensions[d].fCategories;
  std::vector<OutputCategory> made;
  std::vector<int> first;
  for (std::size_t i = 0; i < categories.size(); ++i) {
    first.push_back(static_cast<int>(made.size()));
    OutputCategory copy = categories[i];
    if (copy.fParent >= 0) copy.fParent = first[static_cast<std::size_t>(copy.fParent)];
    made.insert(made.end(), static_cast<std::size_t>(times[i]), copy);
  }
  categories = std::move(made);
  std::erase_if(table.fCells, [&](const OutputCell& cell) {
    return times[static_cast<std::size_t>(cell.fPlace[d])] == 0;
  });
  for (OutputCell& cell : table.fCells) {
    cell.fPlace[d] = first[static_cast<std::size_t>(cell.fPlace[d])];
  }
}

// Leaves the values of the data alone, without headings and sums.
void KeepValues(OutputTable& table, int dimension) {
  std::vector<OutputCategory>& categories =
      table.fDimensions[static_cast<std::size_t>(dimension)].fCategories;
  std::vector<int> times;
  for (OutputCategory& category : categories) {
    category.fParent = -1;
    times.push_back(IsValue(category) ? 1 : 0);
  }
  Repeat(table, dimension, times);
}

void AddDimension(OutputTable& table, const char* name, OutputDimension::Axis axis) {
  OutputDimension& added = table.fDimensions.emplace_back();
  added.fName = OutputText::Key(name);
  added.fAxis = axis;
}

void AddCategory(OutputDimension& dimension, OutputText label) {
  dimension.fCategories.emplace_back().fLabel = std::move(label);
}

void CellsAsRecords(OutputTable& table) {
  const int columns = OnlyColumns(table);
  if (columns < 0 || !HasValues(table.fDimensions[static_cast<std::size_t>(columns)])) return;
  for (std::size_t i = 0; i < table.fDimensions.size(); ++i) {
    if (HasValues(table.fDimensions[i])) KeepValues(table, static_cast<int>(i));
  }
  table.fDimensions[static_cast<std::size_t>(columns)].fAxis = OutputDimension::kRow;
  const bool isCount =
      !table.fCells.empty() && table.fCells.front().fFormat == OutputFormat::kCount;
  AddDimension(table, "Statistics", OutputDimension::kColumn);
  AddCategory(table.fDimensions.back(), OutputText::Key(isCount ? "Cases" : "Value"));
  for (OutputCell& cell : table.fCells) cell.fPlace.push_back(0);
}

// Whether it did: the last column of the records is then the predictors' last heading.
bool ItemsAsRecords(OutputTable& table) {
  const int columns = OnlyColumns(table);
  if (columns < 0) return false;
  const bool isList =
      table.fDimensions[static_cast<std::size_t>(columns)].Leaves().size() == 1 &&
      std::all_of(table.fCells.begin(), table.fCells.end(), [](const OutputCell& cell) {
        return ItemsOf(cell) != nullptr && !IsNumberList(cell);
      });
  if (!isList || table.fCells.empty()) return false;
  AddDimension(table, "Predictor", OutputDimension::kRow);
  const std::vector<OutputCategory>& items = table.fDimensions.back().fCategories;
  for (const OutputCell& cell : std::exchange(table.fCells, {})) {
    for (const OutputText& item : *ItemsOf(cell)) {
      OutputCell& added = table.fCells.emplace_back(cell);
      added.fValue = item;
      added.fPlace.push_back(static_cast<int>(items.size()));
      AddCategory(table.fDimensions.back(), item);
    }
  }
  return true;
}

// How many columns the numbers of each category need.
std::vector<int> NumbersOf(const OutputTable& table, std::size_t dimension) {
  std::vector<int> times(table.fDimensions[dimension].fCategories.size(), 1);
  for (const OutputCell& cell : table.fCells) {
    if (!IsNumberList(cell)) continue;
    int& most = times[static_cast<std::size_t>(cell.fPlace[dimension])];
    most = std::max(most, static_cast<int>(ItemsOf(cell)->size()));
  }
  return times;
}

void SplitNumbers(OutputTable& table) {
  const int columns = OnlyColumns(table);
  if (columns < 0) return;
  const auto d = static_cast<std::size_t>(columns);
  const std::vector<int> times = NumbersOf(table, d);
  Repeat(table, columns, times);
  std::vector<OutputCategory>& categories = table.fDimensions[d].fCategories;
  for (std::size_t i = 0, at = 0; i < times.size(); at += static_cast<std::size_t>(times[i++])) {
    for (int k = 0; times[i] > 1 && k < times[i]; ++k) {
      OutputText& label = categories[at + static_cast<std::size_t>(k)].fLabel;
      label = OutputText::Literal(label.fKey + std::to_string(k + 1));
    }
  }
  for (OutputCell& cell : std::exchange(table.fCells, {})) {
    if (!IsNumberList(cell)) {
      table.fCells.push_back(std::move(cell));
      continue;
    }
    for (const OutputText& item : *ItemsOf(cell)) {
      OutputCell& added = table.fCells.emplace_back(cell);
      ReadNumber(item, added.fValue.emplace<double>());
      added.fPlace[d] += static_cast<int>(&item - ItemsOf(cell)->data());
    }
  }
}

// "Test: Value" is "test_value".
std::string PlainName(const std::string& name) {
  std::string plain;
  for (const char c : name) {
    const bool isUpper = c >= 'A' && c <= 'Z';
    const bool isKept = isUpper || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || (c & 0x80);
    if (isKept) {
      plain += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
    } else if (!plain.empty() && plain.back() != '_') {
      plain += '_';
    }
  }
  plain.erase(plain.find_last_not_of('_') + 1);
  return plain;
}

void NamePlainly(FlatRecords& records) {
  std::set<std::string> all;
  for (const FlatColumn& column : records.fColumns) all.insert(PlainName(column.fName));
  std::set<std::string> taken;
  for (FlatColumn& column : records.fColumns) {
    std::string name = PlainName(column.fName);
    const bool isGroup = name.ends_with("_group_1");
    const std::string stem = name.substr(0, name.size() - (isGroup ? 2 : 0));
    if (isGroup && !all.contains(stem + "_2")) name = stem;
    column.fName = name;
    for (int n = 2; !taken.insert(column.fName).second; ++n) {
      column.fName = name + "_" + std::to_string(n);
    }
  }
}

}  // namespace

FlatRecords LayFlat(const OutputTable& table) {
  OutputTable shaped = table;
  CellsAsRecords(shaped);
  const bool hasItems = ItemsAsRecords(shaped);
  SplitNumbers(shaped);
  FlatRecords records = TableRecords(shaped);
  if (hasItems) records.fColumns.pop_back();  // the items once more
  NamePlainly(records);
  return records;
}

}  // namespace MCHost
