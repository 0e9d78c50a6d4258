// Builds a pivot table and hands it to the current session's output.
//
//   BpPivotTable table("Selected Predictors", "SelectedPredictors");
//   BpDimension rows = table.RowDimension("Type");
//   BpDimension columns = table.ColumnDimension("Predictors");
//   const BpCategory row = rows.AddCategory(BpString("Scale"));
//   const BpCategory column = columns.AddCategory(BpString("Predictors"));
//   table.SetCell({row, column}, names.Finish());
//   table.Show();
//
// Dimensions, groups and categories are handles into the table and must not outlive it.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "host/output/OutputTable.h"
#include "host/output/pivot/BpCategory.h"
#include "host/output/pivot/BpDimension.h"

class BpPivotTable {
 public:
  BpPivotTable(const std::string& titleKey, std::string subtype);
  BpPivotTable(const BpPivotTable&) = delete;
  BpPivotTable& operator=(const BpPivotTable&) = delete;

  void Caption(MCHost::OutputText caption) { fTable.fCaption = std::move(caption); }

  // See MCHost::OutputTable::fbFlat.
  void Flat() { fTable.fbFlat = true; }

  // See MCHost::OutputTable::fbForPrograms.
  void ForPrograms() { fTable.fbForPrograms = true; }

  // In points.
  void MinDataColumnWidth(int points) { fTable.fMinDataColumnWidth = points; }

  // That so many cells are going to be set at most, so that they are not moved as they become more.
  void Reserve(std::size_t cells) { fTable.fCells.reserve(cells); }

  // Dimensions of one axis nest in the order in which they are added.
  BpDimension RowDimension(const std::string& nameKey);
  BpDimension ColumnDimension(const std::string& nameKey);
  BpDimension LayerDimension(const std::string& nameKey);

  // Gives the cell at one category of every dimension its value; setting it again replaces it. A
  // number takes the format of its categories (that of the last dimension which has one) and is an
  // empty cell when it is missing.
  // REQUIRES: categories in the order of the dimensions, none of them a group.
  void SetCell(std::initializer_list<BpCategory> place, double value);
  void SetCell(std::initializer_list<BpCategory> place, MCHost::OutputText value);

  // Hands the finished table over. Call once, last.
  void Show();

 private:
  friend class BpCategory;
  friend class BpDimension;
  friend class BpGroup;

  BpDimension AddDimension(const std::string& nameKey, MCHost::OutputDimension::Axis axis);
  MCHost::OutputCategory& At(int dimension, int category);
  // Equal texts share one footnote.
  int AddFootnote(MCHost::OutputText text);
  MCHost::OutputCell& CellAt(const std::vector<BpCategory>& place);

  MCHost::OutputTable fTable;
  std::map<std::vector<int>, std::size_t> fCellPlaces;  // leaves -> place in the table's cells
};
