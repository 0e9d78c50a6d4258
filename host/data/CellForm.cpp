#include "host/data/CellForm.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace MCHost {

namespace {

constexpr std::size_t kStep = 64;  // cells between two looks at whether they still fit
constexpr std::array<double, 10> kPowers = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
constexpr int kMostPlaces = static_cast<int>(kPowers.size()) - 1;

// What stands for a missing cell among narrow ones.
template <class Narrow>
constexpr Narrow kHole = std::is_floating_point_v<Narrow> ? std::numeric_limits<Narrow>::quiet_NaN()
                                                          : std::numeric_limits<Narrow>::lowest();

// The nearest integer to a number below 2^51; something else for others.
double Rounded(double value) {
  constexpr double kShift = 6755399441055744.0;  // 1.5 * 2^52
  return value + kShift - kShift;
}

// The bits in which a cell differs from what is left of it with so many decimal places: none where
// all of it is, the sign of zero among it.
std::uint64_t Lost(double cell, double power, double missing) {
  const double left = Rounded(cell * power) / power;
  const std::uint64_t differ =
      std::bit_cast<std::uint64_t>(left) ^ std::bit_cast<std::uint64_t>(cell);
  return cell == missing ? 0 : differ;
}

// The fewest decimal places, from so many on, with which a cell is whole; too many where it is not.
int PlacesOf(double cell, int places, double missing) {
  while (places <= kMostPlaces &&
         Lost(cell, kPowers[static_cast<std::size_t>(places)], missing) != 0) {
    ++places;
  }
  return places;
}

// The same for all cells.
int PlacesOf(const double* cells, std::size_t n, double missing) {
  int places = 0;
  for (std::size_t i = 0; i < n; i += kStep) {
    const std::size_t end = std::min(i + kStep, n);
    const double power = kPowers[static_cast<std::size_t>(places)];
    std::uint64_t lost = 0;
    for (std::size_t k = i; k < end; ++k) lost |= Lost(cells[k], power, missing);
    if (lost == 0) continue;
    for (std::size_t k = i; k < end && places <= kMostPlaces; ++k) {
      places = PlacesOf(cells[k], places, missing);
    }
    if (places > kMostPlaces) break;
  }
  return places;
}

template <class T>
double LargestOf(const T* cells, std::size_t n, T missing) {
  T least{};
  T most{};
  for (std::size_t i = 0; i < n; ++i) {
    const T cell = cells[i] == missing ? T{} : cells[i];
    least = std::min(least, cell);
    most = std::max(most, cell);
  }
  return std::max(static_cast<double>(most), -static_cast<double>(least));
}

// How many bytes hold integers no larger than that, either way.
std::size_t BytesOfIntegers(double largest) {
  if (largest <= std::numeric_limits<std::int8_t>::max()) return 1;
  if (largest <= std::numeric_limits<std::int16_t>::max()) return 2;
  return largest <= std::numeric_limits<std::int32_t>::max() ? 4 : 8;
}

bool AreFloats(const double* cells, std::size_t n, double missing) {
  constexpr double kMost = std::numeric_limits<float>::max();
  for (std::size_t i = 0; i < n; i += kStep) {
    const std::size_t end = std::min(i + kStep, n);
    bool all = true;
    for (std::size_t k = i; k < end; ++k) {
      const double cell = cells[k];
      const bool isWithin = cell >= -kMost && cell <= kMost;
      const double left = static_cast<float>(isWithin ? cell : 0.0);
      all &= (left == cell) | (cell == missing);
    }
    if (!all) return false;
  }
  return true;
}

template <class Narrow, class T>
void PackAs(const T* cells, std::size_t n, T missing, [[maybe_unused]] double power, Narrow* to) {
  for (std::size_t i = 0; i < n; ++i) {
    if constexpr (std::is_same_v<T, double> && std::is_integral_v<Narrow>) {
      const double whole = Rounded((cells[i] == missing ? 0.0 : cells[i]) * power);
      to[i] = cells[i] == missing ? kHole<Narrow> : static_cast<Narrow>(whole);
    } else {
      to[i] = cells[i] == missing ? kHole<Narrow> : static_cast<Narrow>(cells[i]);
    }
  }
}

template <class Narrow, class T>
void UnpackAs(const Narrow* from, std::size_t n, T missing, [[maybe_unused]] double power,
              T* cells) {
  const auto isHole = [](Narrow cell) {
    return std::is_floating_point_v<Narrow> ? cell != cell : cell == kHole<Narrow>;
  };
  if constexpr (std::is_same_v<T, double> && std::is_integral_v<Narrow>) {
    if (power != 1.0) {
      for (std::size_t i = 0; i < n; ++i) {
        cells[i] = isHole(from[i]) ? missing : static_cast<double>(from[i]) / power;
      }
      return;
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    cells[i] = isHole(from[i]) ? missing : static_cast<T>(from[i]);
  }
}

}  // namespace

template <>
CellForm CellForm::Of(const std::int32_t* cells, std::size_t n, std::int32_t missing) {
  const std::size_t bytes = BytesOfIntegers(LargestOf(cells, n, missing));
  return bytes < sizeof(*cells) ? CellForm(kIntegers, bytes) : CellForm(kPlain, sizeof(*cells));
}

template <>
CellForm CellForm::Of(const double* cells, std::size_t n, double missing) {
  const int places = PlacesOf(cells, n, missing);
  if (places <= kMostPlaces) {
    const double power = kPowers[static_cast<std::size_t>(places)];
    const std::size_t bytes = BytesOfIntegers(Rounded(LargestOf(cells, n, missing) * power));
    if (bytes < sizeof(*cells)) return {kIntegers, bytes, places};
  }
  return AreFloats(cells, n, missing) ? CellForm(kFloats, sizeof(float))
                                      : CellForm(kPlain, sizeof(*cells));
}

// Calls work(narrow), a null pointer to what the cells are stored as.
template <class Work>
void CellForm::WithNarrow(Work work) const {
  if (fKind == kFloats) {
    work(static_cast<float*>(nullptr));
  } else if (fCellBytes == 1) {
    work(static_cast<std::int8_t*>(nullptr));
  } else if (fCellBytes == 2) {
    work(static_cast<std::int16_t*>(nullptr));
  } else {
    work(static_cast<std::int32_t*>(nullptr));
  }
}

template <class T>
void CellForm::Pack(const T* cells, std::size_t n, T missing, void* stored) const {
  if (IsPlain()) {
    std::copy_n(cells, n, static_cast<T*>(stored));
    return;
  }
  WithNarrow([&](auto* narrow) {
    PackAs(cells, n, missing, kPowers[fPlaces], static_cast<decltype(narrow)>(stored));
  });
}

template <class T>
void CellForm::Unpack(const void* stored, std::size_t n, T missing, T* cells) const {
  if (IsPlain()) {
    std::copy_n(static_cast<const T*>(stored), n, cells);
    return;
  }
  WithNarrow([&](auto* narrow) {
    using Narrow = std::remove_pointer_t<decltype(narrow)>;
    UnpackAs(static_cast<const Narrow*>(stored), n, missing, kPowers[fPlaces], cells);
  });
}

template void CellForm::Pack(const double*, std::size_t, double, void*) const;
template void CellForm::Pack(const std::int32_t*, std::size_t, std::int32_t, void*) const;
template void CellForm::Unpack(const void*, std::size_t, double, double*) const;
template void CellForm::Unpack(const void*, std::size_t, std::int32_t, std::int32_t*) const;

}  // namespace MCHost
