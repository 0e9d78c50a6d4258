// A flat table of the output as lines of text: see OutputTable::fbFlat.
//
// The columns of a group stand close together under its heading. Labels that are long are cut where
// the line has no room for them, and so is the last column that is shown, where it is one of texts.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/output/OutputTable.h"

namespace MCHost {

class FlatText {
 public:
  // The table is read whole. `blocks`: bars and histograms are drawn.
  FlatText(const OutputTable& table, std::size_t pageWidth, bool blocks);

  // With its headings, without title, caption and footnotes. Empty for a table without rows.
  std::string Draw() const;

  // The most that a flat table takes of a page.
  static std::size_t WidthOn(std::size_t pageWidth);

 private:
  struct Column {
    std::vector<std::string> fCells;  // a row each
    std::vector<double> fBars;        // beside them; empty for none
    std::size_t fWidth = 0;           // without the bar
    bool fbText = true;
  };
  // Columns under one heading.
  struct Block {
    std::string fHeading;
    std::vector<Column> fColumns;
    bool fbCount = false;  // one column of counts
  };

  static Column MakeColumn(const OutputTable& table, int leaf, const std::vector<int>& rows);
  void AddColumn(const std::string& heading, Column column, bool count);
  std::size_t WidthOf(const Block& block) const;
  // What a text in the place of the next block may take of a line's rest; 0 where that is too
  // little, or the block is none of texts.
  static std::size_t CutWidth(const Block& block, std::size_t rest);
  // Which blocks are shown, and how wide labels and bars are.
  void Fit(std::size_t width);
  std::string Line(const std::string& label, const std::vector<std::string>& blocks) const;
  std::string CellsOf(const Block& block, std::size_t row) const;

  std::vector<std::string> fLabels;
  std::string fLabelHeading;
  std::vector<Block> fBlocks;
  std::size_t fLabelWidth = 0;
  std::size_t fBarWidth = 0;
  std::size_t fNShown = 0;  // of the blocks
};

}  // namespace MCHost
