// Eight sums side by side: value k of a run goes into lane k mod 8, so that a processor can work on
// several at once and the order of every sum is still fixed by the place of the value alone.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

class FSLanes {
 public:
  static constexpr int kCount = 8;

  double& operator[](int lane) { return fSums[static_cast<std::size_t>(lane)]; }
  double* Data() { return fSums.data(); }
  double Sum() const {
    return ((fSums[0] + fSums[4]) + (fSums[2] + fSums[6])) +
           ((fSums[1] + fSums[5]) + (fSums[3] + fSums[7]));
  }

  // Divides every sum by 2^by.
  void Coarsen(int by) {
    for (double& sum : fSums) sum = std::ldexp(sum, -by);
  }

 private:
  std::array<double, kCount> fSums{};
};

// Gives out n values that come behind so many others: up to the next one of lane 0, and at the end,
// by one(k, lane); those between, whole rounds of the lanes, by whole(from, how many).
template <class One, class Whole>
void FSInLanes(int before, std::size_t n, One one, Whole whole) {
  const auto offset = static_cast<std::size_t>(before);
  const std::size_t head =
      std::min(n, (FSLanes::kCount - offset % FSLanes::kCount) % FSLanes::kCount);
  const std::size_t end = head + (n - head) / FSLanes::kCount * FSLanes::kCount;
  const auto laneOf = [offset](std::size_t k) {
    return static_cast<int>((offset + k) % FSLanes::kCount);
  };
  for (std::size_t k = 0; k < head; ++k) one(k, laneOf(k));
  if (end > head) whole(head, end - head);
  for (std::size_t k = end; k < n; ++k) one(k, laneOf(k));
}
