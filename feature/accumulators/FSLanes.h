// Eight sums side by side: value k of a run goes into lane k mod 8, so that a processor can work on
// several at once and the order of every sum is still fixed by the place of the value alone.
//
// The loops are written in pairs of doubles (a vector type of GCC and Clang, which every machine
// has or imitates): of plain loops over eight lanes GCC keeps three sums in memory, at half the
// speed.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

using FSTwo = double __attribute__((vector_size(16)));

class FSLanes {
 public:
  static constexpr int kCount = 8;
  static constexpr std::size_t kPairs = kCount / 2;

  double& operator[](int lane) { return fSums[static_cast<std::size_t>(lane)]; }
  double Sum() const {
    return ((fSums[0] + fSums[4]) + (fSums[2] + fSums[6])) +
           ((fSums[1] + fSums[5]) + (fSums[3] + fSums[7]));
  }

  FSTwo GetTwo(std::size_t pair) const { return FSTwo{fSums[2 * pair], fSums[2 * pair + 1]}; }
  void SetTwo(std::size_t pair, FSTwo two) {
    fSums[2 * pair] = two[0];
    fSums[2 * pair + 1] = two[1];
  }

  // Divides every sum by 2^by.
  void Coarsen(int by) {
    for (double& sum : fSums) sum = std::ldexp(sum, -by);
  }

 private:
  std::array<double, kCount> fSums{};
};

// Adds at(k) - origin and its square for k from 0 to n - 1, from lane 0 on. REQUIRES: n mod 8 = 0.
template <class At>
void FSSumSteps(std::size_t n, At at, double origin, FSLanes& sums, FSLanes& squares) {
  FSTwo s[FSLanes::kPairs], q[FSLanes::kPairs];
  for (std::size_t l = 0; l < FSLanes::kPairs; ++l) s[l] = sums.GetTwo(l), q[l] = squares.GetTwo(l);
  const FSTwo from = {origin, origin};
  for (std::size_t k = 0; k < n; k += FSLanes::kCount) {
    for (std::size_t l = 0; l < FSLanes::kPairs; ++l) {
      const FSTwo step = FSTwo{at(k + 2 * l), at(k + 2 * l + 1)} - from;
      s[l] += step;
      q[l] += step * step;
    }
  }
  for (std::size_t l = 0; l < FSLanes::kPairs; ++l) sums.SetTwo(l, s[l]), squares.SetTwo(l, q[l]);
}

// The same, and of products with other steps.
inline void FSSumStepsWith(std::size_t n, const double* x, double origin, const double* others,
                           FSLanes& sums, FSLanes& squares, FSLanes& products) {
  FSTwo s[FSLanes::kPairs], q[FSLanes::kPairs], c[FSLanes::kPairs];
  for (std::size_t l = 0; l < FSLanes::kPairs; ++l) {
    s[l] = sums.GetTwo(l), q[l] = squares.GetTwo(l), c[l] = products.GetTwo(l);
  }
  const FSTwo from = {origin, origin};
  for (std::size_t k = 0; k < n; k += FSLanes::kCount) {
    for (std::size_t l = 0; l < FSLanes::kPairs; ++l) {
      const std::size_t at = k + 2 * l;
      const FSTwo step = FSTwo{x[at], x[at + 1]} - from;
      s[l] += step;
      q[l] += step * step;
      c[l] += step * FSTwo{others[at], others[at + 1]};
    }
  }
  for (std::size_t l = 0; l < FSLanes::kPairs; ++l) {
    sums.SetTwo(l, s[l]), squares.SetTwo(l, q[l]), products.SetTwo(l, c[l]);
  }
}
