#include "common/parts/TableRanges.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "common/state/StateBytes.h"
#include "common/state/StateFields.h"

namespace {

constexpr int kLeastColumn = 60;  // bytes of one

bool AreApart(const std::vector<PartSize>& parts) {
  return std::adjacent_find(parts.begin(), parts.end(), [](const PartSize& a, const PartSize& b) {
           return a.fPart >= b.fPart;
         }) == parts.end();
}

}  // namespace

std::int64_t TableRanges::CaseCount() const {
  std::int64_t cases = 0;
  for (const PartSize& part : fParts) cases += part.fNCases;
  return cases;
}

std::int64_t TableRanges::FirstCaseOf(std::int64_t part) const {
  std::int64_t first = 0;
  for (const PartSize& one : fParts) {
    if (one.fPart == part) return first;
    first += one.fNCases;
  }
  return -1;
}

std::int64_t TableRanges::CaseCountOf(std::int64_t part) const {
  const auto found = std::ranges::lower_bound(fParts, part, {}, &PartSize::fPart);
  return found == fParts.end() || found->fPart != part ? -1 : found->fNCases;
}

int TableRanges::FindColumn(const std::string& name) const {
  for (std::size_t i = 0; i < fColumns.size(); ++i) {
    if (fColumns[i].fDictionary.fName == name) return static_cast<int>(i);
  }
  return -1;
}

void TableRanges::Renumber(std::int64_t first) {
  std::map<std::int64_t, std::int64_t> numbers;
  for (PartSize& part : fParts) part.fPart = numbers[part.fPart] = first++;
  for (ColumnRange& column : fColumns) {
    for (std::int64_t& place : column.fFirst) {
      const std::int64_t part = place >> ColumnRange::kPartShift;
      place += (numbers[part] - part) << ColumnRange::kPartShift;
    }
  }
}

std::string TableRanges::Merge(const TableRanges& other) {
  if (fWeight != other.fWeight) return "the weight variable is another";
  if (fColumns.size() != other.fColumns.size()) {
    return "it has " + std::to_string(other.fColumns.size()) + " columns, and others have " +
           std::to_string(fColumns.size()) + "; parts have the same columns in the same order";
  }
  std::vector<PartSize> parts;
  std::merge(fParts.begin(), fParts.end(), other.fParts.begin(), other.fParts.end(),
             std::back_inserter(parts));
  const auto twice = std::ranges::adjacent_find(parts, {}, &PartSize::fPart);
  if (twice != parts.end()) {
    return "part " + std::to_string(twice->fPart) + " is there already";
  }
  std::vector<ColumnRange> columns = fColumns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::string why = columns[i].Merge(other.fColumns[i]);
    if (!why.empty()) return why;
  }
  fColumns = std::move(columns);
  fParts = std::move(parts);
  return "";
}

std::uint64_t TableRanges::Digest() const { return StateBytes::Digest(StateBytes::Of(*this)); }

template <class Archive, class Self>
void TableRanges::Fields(Archive& archive, Self& self) {
  archive.Text(self.fWeight);
  archive.Size(self.fColumns, kLeastColumn);
  for (auto& column : self.fColumns) archive.Object(column);
  archive.Size(self.fParts, 16);
  for (auto& part : self.fParts) {
    archive.Long(part.fPart);
    archive.Long(part.fNCases);
    archive.Check(part.fPart >= 0 && part.fPart < kMostParts && part.fNCases >= 0);
  }
  archive.Check(AreApart(self.fParts));
}

MC_STATE_OPERATIONS(TableRanges, "PSRANGES 1.00", "TableRanges 1.00")
