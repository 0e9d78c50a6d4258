// Finds the bin of a value by a multiplication instead of a search: equal cells over the cutpoints,
// so narrow that none holds more than one place where the bin changes.
//
// The cell of a value never falls while the value rises, whatever is lost in rounding. So when the
// cutpoints are in cells of their own, one comparison with the cutpoint of its cell gives each
// value the very bin that counting cutpoints gives. Cutpoints too close together for that, or out
// of order, make no grid.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class NBBinGrid {
 public:
  explicit NBBinGrid(const std::vector<double>& cutpoints);

  bool IsUsable() const { return !fvCells.empty(); }

  // The number of cutpoints strictly below each value, INBEncoder::kMissingCode for a missing one.
  // REQUIRES: IsUsable().
  void Encode(const double* values, std::size_t cases, std::int32_t* bins) const;

 private:
  struct Cell {
    double fCutpoint;      // the highest double in a cell without one
    std::int32_t fBin;     // of its values up to the cutpoint
    std::int32_t fBeyond;  // bins further for those above
  };

  void FillTo(std::size_t cell, std::int32_t bin);

  double fLow = 0;
  double fScale = 1;
  double fLast = 0;           // number of the last cell
  std::vector<Cell> fvCells;  // behind the last one that of missing values
};
