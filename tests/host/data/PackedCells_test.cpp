#include "host/data/PackedCells.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/CellChunks.h"
#include "host/data/CellSpool.h"

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
  const double borders[] = {0.0,          -0.0,          127.0,         128.0,
                            -127.0,       -128.0,        -129.0,        32767.0,
                            32768.0,      -32768.0,      -32769.0,      2147483647.0,
                            2147483648.0, -2147483648.0, -2147483649.0, 16777217.0,
                            0.5,          0.1,           FLT_MAX,       FLT_MIN / 4,
                            DBL_MAX,      DBL_MIN,       1e-320,        kMissing,
                            3.2767,       3.2768,        -214748.3647,  214748.3648,
                            1e-9,         1e-10,         0.1 + 0.2,     4503599627370495.5};
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

TEST(PackedCells, TakeTheFewestBytesThatHoldThem) {
  constexpr double kMissing = KOVA_SystemMissing;
  const struct {
    std::vector<double> fCells;
    std::size_t fBytes;
  } kForms[] = {{{1, -127, kMissing}, 1},   {{kMissing, kMissing}, 1}, {{0.1, -0.25, 1.27}, 1},
                {{-0.1234, 3.2767, 2}, 2},  {{0.5, 40000}, 4},         {{-214748.3647, 0.1}, 4},
                {{0.5, -0.0}, 4},           {{FLT_MAX, FLT_MIN}, 4},   {{0.1, -0.0}, 8},
                {{0.1, 214748364.8}, 8},    {{1.0 / 3, 1}, 8},         {{1e-10}, 8},
                {{1e300, kMissing, 0.1}, 8}};
  for (const auto& [cells, bytes] : kForms) {
    SCOPED_TRACE(cells[0]);
    EXPECT_EQ(CellForm::Of(cells.data(), cells.size(), kMissing).CellBytes(), bytes);
    ExpectTheSameBits(cells, kMissing);
  }
}

TEST(PackedCells, ASpoolGivesBackEachColumnOfEachGroup) {
  constexpr std::size_t kColumns = 7;
  constexpr std::size_t kCases = 1300;
  std::vector<bool> numeric(kColumns, true);
  numeric[1] = numeric[6] = false;
  const auto cell = [](std::size_t column, std::size_t i) {
    if ((i + column) % 11 == 0) return KOVA_SystemMissing;
    const double whole = static_cast<double>(i * (column + 3) % 1000);
    return column == 2 || i / 100 == 7 ? std::sqrt(whole) : whole / 1000;
  };
  const auto code = [](std::size_t column, std::size_t i) {
    return static_cast<std::int32_t>(i * column % (i < 600 ? 100 : 70000)) - 1;
  };
  CellSpool spool(numeric);
  for (const auto& [first, end] : {std::pair{0, 3}, std::pair{3, 4}, std::pair{4, 7}}) {
    spool.Begin(static_cast<std::size_t>(end - first));
    for (std::size_t done = 0; done < kCases;) {
      const std::size_t n = std::min({spool.Room(), done % 97 + 1, kCases - done});
      for (auto j = static_cast<std::size_t>(first); j < static_cast<std::size_t>(end); ++j) {
        for (std::size_t i = 0; i < n; ++i) {
          if (numeric[j]) {
            spool.NextNumbers(j)[i] = cell(j, done + i);
          } else {
            spool.NextCodes(j)[i] = code(j, done + i);
          }
        }
      }
      spool.Advance(n);
      done += n;
    }
  }
  spool.Show();
  std::vector<double> numbers;
  std::vector<std::int32_t> codes;
  constexpr std::size_t kStep = 64;  // within a block, whatever its size
  for (std::size_t at = 0; at < kCases; at += kStep) {
    const std::size_t n = std::min(kStep, kCases - at) - at / kStep % 3;
    const auto first = static_cast<std::int64_t>(at);
    for (std::size_t j = 0; j < kColumns; ++j) {
      const double* const read = numeric[j] ? spool.Read(j, first, n, numbers) : nullptr;
      const std::int32_t* const coded = numeric[j] ? nullptr : spool.Read(j, first, n, codes);
      for (std::size_t i = 0; i < n; ++i) {
        if (read != nullptr) {
          ASSERT_EQ(read[i], cell(j, at + i)) << j << " " << at + i;
        } else {
          ASSERT_EQ(coded[i], code(j, at + i)) << j << " " << at + i;
        }
      }
    }
    spool.Forget(first);
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
