// A run of consecutive cases seen column by column: what the engines' data passes consume.
//
// A block does not own its columns. Whoever hands it out keeps them alive and unchanged until the
// next block (or record) is asked of the same iterator. Values mean what they mean in a Record.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace MCCommon {

class RecordBlock {
 public:
  // The most cases that any block holds.
  static constexpr std::size_t kMaxCases = 4096;

  // Cases a block of so many columns should hold to stay within a processor's cache.
  static constexpr std::size_t PreferredCases(std::size_t columns) {
    constexpr std::size_t kCells = 131072;
    return std::clamp<std::size_t>(kCells / std::max<std::size_t>(columns, 1), 128, kMaxCases);
  }

  std::size_t Cases() const { return fCases; }
  std::size_t Columns() const { return fColumns.size(); }

  // The values of one column, Cases() of them. REQUIRES: column < Columns().
  const double* Column(std::size_t column) const { return fColumns[column]; }

  // Makes the block a view of the given columns.
  void Reset(std::size_t columns, std::size_t cases) {
    fColumns.assign(columns, nullptr);
    fCases = cases;
  }
  void SetColumn(std::size_t column, const double* values) { fColumns[column] = values; }

 private:
  std::vector<const double*> fColumns;
  std::size_t fCases = 0;
};

}  // namespace MCCommon
