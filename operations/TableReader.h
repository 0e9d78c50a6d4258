// The cells of a pivot table, found by what its rows and columns are called.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "host/output/OutputTable.h"

namespace PredSelect {

class TableReader {
 public:
  // The table is borrowed.
  explicit TableReader(const MCHost::OutputTable& table);

  // The leaves of a dimension, in order.
  std::vector<int> Leaves(std::size_t dimension) const {
    return fTable.fDimensions[dimension].Leaves();
  }
  // That of these keys, joined with ": " from the outermost group; -1 where there is none.
  int Find(std::size_t dimension, const std::string& path) const;
  // Of a leaf or a group.
  const MCHost::OutputText& LabelOf(std::size_t dimension, int category) const;

  // One leaf a dimension. Null, a missing number, an empty text where there is no such cell.
  const MCHost::OutputCell* At(const std::vector<int>& place) const;
  double Number(const std::vector<int>& place) const;
  MCHost::OutputText Text(const std::vector<int>& place) const;

 private:
  const MCHost::OutputTable& fTable;
  std::vector<std::map<std::string, int>> fPaths;  // a dimension each
  std::map<std::vector<int>, const MCHost::OutputCell*> fCells;
};

}  // namespace PredSelect
