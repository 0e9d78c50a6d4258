// A pivot table: dimensions of nested categories, and a cell wherever a value stands.
//
// A plain value, made with BpPivotTable and read by the renderers. A category is named by its place
// in its dimension's list; a parent always stands before its children. A cell names one leaf of
// every dimension, in the order of the dimensions.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/output/OutputFormat.h"
#include "host/output/OutputText.h"

namespace MCHost {

struct OutputCategory {
  OutputText fLabel;
  int fParent = -1;  // -1: at the top of its dimension
  bool fbGroup = false;
  OutputFormat fFormat = OutputFormat::kText;  // of the cells of a leaf; kText: it does not say
  std::vector<int> fNotes;                     // places in the table's footnotes
};

struct OutputDimension {
  enum Axis { kRow, kColumn, kLayer };

  OutputText fName;
  Axis fAxis = kRow;
  bool fbShowName = false;  // of columns: the name stands above their headings
  std::vector<OutputCategory> fCategories;

  // The leaves in the order in which they are shown: children in order, groups of nothing left out.
  std::vector<int> Leaves() const;
  // From the top to the category itself.
  std::vector<int> PathTo(int category) const;
};

struct OutputCell {
  std::vector<int> fPlace;  // one leaf a dimension
  // Nothing for a missing statistic. A list cell is a text with a list argument.
  std::variant<std::monostate, double, OutputText> fValue;
  OutputFormat fFormat = OutputFormat::kText;
  std::vector<int> fNotes;
};

struct OutputTable {
  OutputText fTitle;
  std::string fSubtype;
  std::optional<OutputText> fCaption;
  std::vector<OutputDimension> fDimensions;
  std::vector<OutputCell> fCells;
  std::vector<OutputText> fFootnotes;
  int fMinDataColumnWidth = 0;  // in points; 0 leaves it to the renderer
  // One line a row, for 80 columns: a page shows as many columns as fit, the first ones, and a
  // first column of counts (a rank, say) before the row's label. One row dimension and one column
  // dimension, whose groups are not nested.
  bool fbFlat = false;
  bool fbForPrograms = false;  // not on a page: JSON, records and streams have it
};

}  // namespace MCHost
