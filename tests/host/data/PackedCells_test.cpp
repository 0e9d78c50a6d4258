#include "host/data/PackedCells.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/CellChunks.h"

namespace MCHost {
namespace {

template <class T>
void ExpectTheSameBits(const std::vector<T>& cells, T missing) {
  const PackedCells<T> packed(std::vector<T>(cells), missing);
  for (const std::size_t first : {std::size_t{0}, cells.size() / 3}) {
    std::vector<T> buffer(cells.size());
    const T* const read = packed.Read(first, cells.size() - first, buffer.data());
    EXPECT_EQ(std::memcmp(read, &cells[first], (cells.size() - first) * sizeof(T)), 0);
  }
}

// Each is at a border of what a narrower form holds; one of them decides on the form of all.
TEST(PackedCells, GiveBackTheBitsThatWentIn) {
  constexpr double kMissing = KOVA_SystemMissing;
  const double borders[] = {0.0,        -0.0,         127.0,        128.0,         -127.0,
                            -128.0,     -129.0,       32767.0,      32768.0,       -32768.0,
                            -32769.0,   2147483647.0, 2147483648.0, -2147483648.0, -2147483649.0,
                            16777217.0, 0.5,          0.1,          FLT_MAX,       FLT_MIN / 4,
                            DBL_MAX,    DBL_MIN,      1e-320,       kMissing};
  for (const double border : borders) {
    SCOPED_TRACE(border);
    for (const double other : {1.0, 300.0, 70000.0, 0.25, 0.3}) {
      std::vector<double> cells(200, other);
      cells[130] = border;
      cells[7] = cells[199] = kMissing;
      ExpectTheSameBits(cells, kMissing);
    }
  }
  for (const std::int32_t border : {-1, 0, 127, 128, -128, 32767, 32768, 2147483647}) {
    std::vector<std::int32_t> codes(200, 3);
    codes[150] = border;
    codes[0] = -1;
    ExpectTheSameBits(codes, -1);
  }
}

TEST(PackedCells, AColumnIsReadAcrossItsChunks) {
  CellChunks<double> column(KOVA_SystemMissing);
  const std::size_t n = 2 * CellChunks<double>::kChunk + 5;
  for (std::size_t i = 0; i < n; ++i) *column.Extend(1) = static_cast<double>(i);
  std::vector<double> buffer;
  for (const bool isClosed : {false, true}) {
    for (const std::size_t i : {std::size_t{0}, CellChunks<double>::kChunk + 7, n - 3}) {
      const double* const cells = column.Read(static_cast<std::int64_t>(i), 3, buffer);
      EXPECT_EQ(cells[0], static_cast<double>(i));
      EXPECT_EQ(cells[2], static_cast<double>(i + 2));
    }
    if (!isClosed) column.Close();
  }
}

}  // namespace
}  // namespace MCHost
