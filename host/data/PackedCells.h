// The cells of a chunk of one column, each in as few bytes as hold all of them exactly: numbers as
// integers of 1, 2 or 4 bytes or as 32-bit floats, codes as integers of 1 or 2, else as they are.
//
// What comes out has the bits that went in. Which form it is shows in nothing but memory.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace MCHost {

template <class T>
class PackedCells {
 public:
  PackedCells(std::vector<T>&& cells, T missing) : fMissing(missing) {
    bool isPacked = false;
    if constexpr (std::is_floating_point_v<T>) {
      isPacked = Pack<std::int8_t>(cells) || Pack<std::int16_t>(cells) ||
                 Pack<std::int32_t>(cells) || Pack<float>(cells);
    } else {
      isPacked = Pack<std::int8_t>(cells) || Pack<std::int16_t>(cells);
    }
    if (isPacked) return;
    cells.shrink_to_fit();
    fCells = std::move(cells);
  }

  // n cells from one of them on, where they lie or in the buffer, which has room for them.
  const T* Read(std::size_t first, std::size_t n, T* buffer) const {
    const auto read = [&](const auto& cells) -> const T* {
      if constexpr (std::is_same_v<decltype(cells), const std::vector<T>&>) {
        return cells.data() + first;
      } else {
        Unpack(cells.data() + first, n, buffer);
        return buffer;
      }
    };
    return std::visit(read, fCells);
  }

 private:
  static constexpr std::size_t kStep = 64;  // cells between two looks at whether they still fit

  // What stands for a missing cell among narrow ones.
  template <class Narrow>
  static constexpr Narrow kHole = std::is_floating_point_v<Narrow>
                                      ? std::numeric_limits<Narrow>::quiet_NaN()
                                      : std::numeric_limits<Narrow>::lowest();

  // The cell as a narrow one; anything where it does not fit.
  template <class Narrow>
  static Narrow Narrowed(T cell) {
    constexpr auto kLow = static_cast<T>(std::numeric_limits<Narrow>::lowest());
    constexpr auto kHigh = static_cast<T>(std::numeric_limits<Narrow>::max());
    return static_cast<Narrow>(cell >= kLow && cell <= kHigh ? cell : T{});
  }

  template <class Narrow>
  static bool Fits(T cell, T missing) {
    const Narrow narrow = Narrowed<Narrow>(cell);
    bool fits = static_cast<T>(narrow) == cell;
    if constexpr (!std::is_floating_point_v<Narrow>) {
      fits &= narrow != kHole<Narrow>;
      if constexpr (std::is_floating_point_v<T>) fits &= !(cell == 0 && std::signbit(cell));
    }
    return fits | (cell == missing);
  }

  template <class Narrow>
  bool Pack(const std::vector<T>& cells) {
    for (std::size_t i = 0; i < cells.size(); i += kStep) {
      bool all = true;
      const std::size_t end = std::min(i + kStep, cells.size());
      for (std::size_t k = i; k < end; ++k) all &= Fits<Narrow>(cells[k], fMissing);
      if (!all) return false;
    }
    std::vector<Narrow> packed(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      packed[i] = cells[i] == fMissing ? kHole<Narrow> : Narrowed<Narrow>(cells[i]);
    }
    fCells = std::move(packed);
    return true;
  }

  template <class Narrow>
  void Unpack(const Narrow* cells, std::size_t n, T* to) const {
    const T missing = fMissing;
    for (std::size_t i = 0; i < n; ++i) {
      const bool isHole =
          std::is_floating_point_v<Narrow> ? cells[i] != cells[i] : cells[i] == kHole<Narrow>;
      to[i] = isHole ? missing : static_cast<T>(cells[i]);
    }
  }

  using Forms = std::conditional_t<
      std::is_floating_point_v<T>,
      std::variant<std::vector<T>, std::vector<std::int8_t>, std::vector<std::int16_t>,
                   std::vector<std::int32_t>, std::vector<float>>,
      std::variant<std::vector<T>, std::vector<std::int8_t>, std::vector<std::int16_t>>>;

  T fMissing;
  Forms fCells;
};

}  // namespace MCHost
