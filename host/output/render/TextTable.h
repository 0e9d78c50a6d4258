// One pivot table drawn with box characters.
//
// Headings nest and span what they head; long texts wrap; a table wider than the page continues
// below in further panels that repeat the row labels.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "host/output/OutputTable.h"
#include "host/output/render/TableAxis.h"

namespace MCHost {

class TextTable {
 public:
  // The table is borrowed.
  TextTable(const OutputTable& table, std::size_t pageWidth);

  // All layers and panels, without title, caption and footnotes.
  std::string Draw() const;

 private:
  // Headings over a range of rows or columns: entries [fFrom, fTo), levels [fLevel, fLevelEnd).
  struct Block {
    std::string fText;
    std::size_t fFrom;
    std::size_t fTo;
    std::size_t fLevel;
    std::size_t fLevelEnd;
  };
  struct ShownCell {
    std::string fText;
    bool fbNumber = false;
  };
  struct Panel;

  static std::vector<Block> Blocks(const std::vector<AxisEntry>& entries, std::size_t depth);

  std::string DrawLayer(const AxisEntry& layer) const;
  std::size_t PanelEnd(const std::vector<std::size_t>& widths, std::size_t first) const;
  std::string DrawPanel(const AxisEntry& layer, const std::vector<std::size_t>& columns) const;
  void PlaceColumns(Panel& panel) const;
  void PlaceHeader(Panel& panel) const;
  void PlaceBody(Panel& panel) const;
  void DrawHeader(const Panel& panel) const;
  void DrawRowLabels(const Panel& panel) const;
  void DrawSeparators(const Panel& panel) const;
  void DrawCells(const Panel& panel) const;

  void MeasureLabels();
  // Labels of one level give up their wishes too, where groups of columns then need not be cut.
  void NarrowLabels();
  std::vector<std::size_t> MeasureColumns(const AxisEntry& layer) const;
  std::size_t RoomForColumns() const;
  // The most that one column may take, so that a single word never makes a line longer than the
  // page.
  std::size_t MostOfAColumn() const;
  std::vector<std::size_t> ColumnWidths(const AxisEntry& layer, std::size_t least,
                                        std::size_t (*measure)(const std::string&)) const;
  void WidenForGroups(std::vector<std::size_t>& widths,
                      std::size_t (*measure)(const std::string&)) const;
  const ShownCell* FindCell(const AxisEntry& row, const AxisEntry& column,
                            const AxisEntry& layer) const;

  const OutputTable& fTable;
  std::size_t fPageWidth;
  std::vector<AxisEntry> fRows;
  std::vector<AxisEntry> fColumns;
  std::size_t fRowDepth;
  std::size_t fColumnDepth;
  std::string fCorner;
  std::vector<std::size_t> fLabelWidths;         // a level of row labels
  std::map<std::vector<int>, ShownCell> fCells;  // by leaves in the order of the dimensions
};

}  // namespace MCHost
