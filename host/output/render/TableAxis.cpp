#include "host/output/render/TableAxis.h"

#include <algorithm>
#include <set>

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

// Every entry so far, continued by every leaf of one more dimension.
std::vector<AxisEntry> Continued(const std::vector<AxisEntry>& entries,
                                 const OutputDimension& dimension, std::size_t place) {
  std::vector<AxisEntry> continued;
  for (const AxisEntry& entry : entries) {
    for (const int leaf : dimension.Leaves()) {
      AxisEntry next = entry;
      for (auto& heading : Headings(dimension, static_cast<int>(place), leaf)) {
        next.fHeadings.push_back(std::move(heading));
      }
      next.fLeaves.push_back(leaf);
      continued.push_back(std::move(next));
    }
  }
  return continued;
}

void DropEmpty(const OutputTable& table, const std::vector<std::size_t>& dimensions,
               std::vector<AxisEntry>& entries) {
  std::set<std::vector<int>> used;
  for (const OutputCell& cell : table.fCells) {
    std::vector<int> leaves;
    leaves.reserve(dimensions.size());
    for (const std::size_t dimension : dimensions) leaves.push_back(cell.fPlace[dimension]);
    used.insert(std::move(leaves));
  }
  std::erase_if(entries, [&](const AxisEntry& entry) { return !used.contains(entry.fLeaves); });
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
  std::vector<AxisEntry> entries(1);
  for (const std::size_t dimension : dimensions) {
    entries = Continued(entries, table.fDimensions[dimension], dimension);
  }
  if (dimensions.size() > 1) DropEmpty(table, dimensions, entries);
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
