// The rows or the columns of a pivot table as they stand on the page: every shown combination of
// leaves of the axis's dimensions, with the headings above it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/output/OutputTable.h"

namespace MCHost {

// One row or column. Equal headings side by side are one heading over all of them.
struct AxisEntry {
  struct Heading {
    std::string fText;  // as shown, with its footnote letters
    int fDimension = 0;
    int fCategory = 0;
  };
  std::vector<Heading> fHeadings;  // from the outermost to the entry's own
  std::vector<int> fLeaves;        // one a dimension of the axis
};

// The entries along an axis, in order. With several dimensions on the axis, combinations without a
// cell are left out. An axis without dimensions has one entry without headings.
std::vector<AxisEntry> AxisEntries(const OutputTable& table, OutputDimension::Axis axis);

// The places in the table's dimensions that lie on the axis.
std::vector<std::size_t> AxisDimensions(const OutputTable& table, OutputDimension::Axis axis);

// The leaves of the cell where three entries meet, in the order of the dimensions.
std::vector<int> CellPlace(const OutputTable& table, const AxisEntry& row, const AxisEntry& column,
                           const AxisEntry& layer);

// The most headings that an entry has.
std::size_t AxisDepth(const std::vector<AxisEntry>& entries);

// True when both entries stand under the same headings from the outermost down to `level`.
bool ShareHeading(const AxisEntry& left, const AxisEntry& right, std::size_t level);

// " [a,c]" for the footnotes 0 and 2; empty for none.
std::string FootnoteMarks(const std::vector<int>& notes);

// "a" for the first footnote, "z" for the 26th, then "aa".
std::string FootnoteLetter(int note);

}  // namespace MCHost
