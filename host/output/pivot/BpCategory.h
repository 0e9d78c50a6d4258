// One row, column or layer of a pivot table under construction: a handle.
#pragma once

#include <initializer_list>

#include "host/output/OutputText.h"

class BpPivotTable;

class BpCategory {
 public:
  // Puts a footnote on the label.
  void Note(MCHost::OutputText text);

  // Puts a footnote on one cell, this category being its place in the last dimension; `others` are
  // its places in the dimensions before. REQUIRES: the cell was set.
  void CellNote(std::initializer_list<BpCategory> others, MCHost::OutputText text);

 private:
  friend class BpDimension;
  friend class BpGroup;
  friend class BpPivotTable;

  BpCategory(BpPivotTable* table, int dimension, int category)
      : fpTable(table), fDimension(dimension), fCategory(category) {}

  BpPivotTable* fpTable;
  int fDimension;
  int fCategory;
};
