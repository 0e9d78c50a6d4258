#include "host/output/render/TableAxis.h"

#include <algorithm>
#include <map>

#include "host/output/ShowText.h"
#include "host/text/VisibleText.h"

namespace MCHost {
namespace {

std::vector<AxisEntry::Heading> Headings(const OutputDimension& dimension, int place, int leaf) {
  std::vector<AxisEntry::Heading> headings;
  if (dimension.fbShowName && dimension.fAxis == OutputDimension::kColumn) {
    headings.push_back({VisibleText(ShowText(dimension.fName)), place, -1});
  }
  for (const int category : dimension.PathTo(leaf)) {
    const OutputCategory& found = dimension.fCategories[static_cast<std::size_t>(category)];
    headings.push_back(
        {VisibleText(ShowText(found.fLabel)) + FootnoteMarks(found.fNotes), place, category});
  }
  return headings;
}

// The combinations of leaves that have a cell, in the order of the leaves. Most combinations of
// many leaves have none.
std::vector<std::vector<int>> Used(const OutputTable& table,
                                   const std::vector<std::size_t>& dimensions) {
  std::vector<std::vector<int>> places(dimensions.size());  // of a category among the leaves
  for (std::size_t i = 0; i < dimensions.size(); ++i) {
    const OutputDimension& dimension = table.fDimensions[dimensions[i]];
    places[i].resize(dimension.fCategories.size());
    int place = 0;
    for (const int leaf : dimension.Leaves()) places[i][static_cast<std::size_t>(leaf)] = place++;
  }
  std::map<std::vector<int>, std::vector<int>> used;  // leaves by their places
  for (const OutputCell& cell : table.fCells) {
    std::vector<int> leaves;
    std::vector<int> place;
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
      leaves.push_back(cell.fPlace[dimensions[i]]);
      place.push_back(places[i][static_cast<std::size_t>(leaves.back())]);
    }
    used.try_emplace(std::move(place), std::move(leaves));
  }
  std::vector<std::vector<int>> combinations;
  for (auto& [place, leaves] : used) combinations.push_back(std::move(leaves));
  return combinations;
}

std::vector<std::vector<int>> Combinations(const OutputTable& table,
                                           const std::vector<std::size_t>& dimensions) {
  if (dimensions.size() > 1) return Used(table, dimensions);
  std::vector<std::vector<int>> combinations;
  if (dimensions.empty()) return {{}};
  for (const int leaf : table.fDimensions[dimensions[0]].Leaves()) combinations.push_back({leaf});
  return combinations;
}

}  // namespace

std::vector<std::size_t> AxisDimensions(const OutputTable& table, OutputDimension::Axis axis) {
  std::vector<std::size_t> dimensions;
  for (std::size_t i = 0; i < table.fDimensions.size(); ++i) {
    if (table.fDimensions[i].fAxis == axis) dimensions.push_back(i);
  }
  return dimensions;
}

std::vector<AxisEntry> AxisEntries(const OutputTable& table, OutputDimension::Axis axis) {
  const std::vector<std::size_t> dimensions = AxisDimensions(table, axis);
  std::vector<AxisEntry> entries;
  for (std::vector<int>& leaves : Combinations(table, dimensions)) {
    AxisEntry& entry = entries.emplace_back();
    for (std::size_t i = 0; i < dimensions.size(); ++i) {
      const auto place = static_cast<int>(dimensions[i]);
      for (auto& heading : Headings(table.fDimensions[dimensions[i]], place, leaves[i])) {
        entry.fHeadings.push_back(std::move(heading));
      }
    }
    entry.fLeaves = std::move(leaves);
  }
  return entries;
}

std::vector<int> CellPlace(const OutputTable& table, const AxisEntry& row, const AxisEntry& column,
                           const AxisEntry& layer) {
  std::vector<int> place(table.fDimensions.size());
  std::size_t taken[] = {0, 0, 0};
  const AxisEntry* entries[] = {&row, &column, &layer};
  for (std::size_t i = 0; i < place.size(); ++i) {
    const OutputDimension::Axis axis = table.fDimensions[i].fAxis;
    place[i] = entries[axis]->fLeaves[taken[axis]++];
  }
  return place;
}

std::size_t AxisDepth(const std::vector<AxisEntry>& entries) {
  std::size_t depth = 0;
  for (const AxisEntry& entry : entries) depth = std::max(depth, entry.fHeadings.size());
  return depth;
}

bool ShareHeading(const AxisEntry& left, const AxisEntry& right, std::size_t level) {
  if (level >= left.fHeadings.size() || level >= right.fHeadings.size()) return false;
  for (std::size_t i = 0; i <= level; ++i) {
    const AxisEntry::Heading& a = left.fHeadings[i];
    const AxisEntry::Heading& b = right.fHeadings[i];
    if (a.fDimension != b.fDimension || a.fCategory != b.fCategory) return false;
  }
  return true;
}

std::string FootnoteLetter(int note) {
  std::string letters;
  for (int rest = note; rest >= 0; rest = rest / 26 - 1) {
    letters.insert(letters.begin(), static_cast<char>('a' + rest % 26));
  }
  return letters;
}

std::string FootnoteMarks(const std::vector<int>& notes) {
  std::string marks;
  for (const int note : notes) marks += (marks.empty() ? " [" : ",") + FootnoteLetter(note);
  return marks.empty() ? marks : marks + "]";
}

}  // namespace MCHost
