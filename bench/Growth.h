// How the time of a piece of work grows with one size of its input: a line for each size, and the
// exponent of the power that leads from the first size to the last one (1: in proportion). Nothing
// is asserted.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

namespace Growth {

// The best of three runs, in seconds; `prepare` is not counted.
template <class Prepare, class Work>
double SecondsOf(Prepare prepare, Work work) {
  double best = INFINITY;
  for (int run = 0; run < 3; ++run) {
    auto input = prepare();
    const auto start = std::chrono::steady_clock::now();
    work(input);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    best = std::min(best, seconds.count());
  }
  return best;
}

// prepare(size) makes the input that work(input) is timed on.
template <class Prepare, class Work>
void Show(const char* title, const std::vector<int>& sizes, Prepare prepare, Work work) {
  std::printf("%s\n", title);
  double first = 0.0, last = 0.0;
  for (const int size : sizes) {
    last = SecondsOf([&] { return prepare(size); }, work);
    if (size == sizes.front()) first = last;
    std::printf("  %9d  %10.2f ms  %8.1f ns each\n", size, last * 1e3, last * 1e9 / size);
  }
  const double exponent = std::log(last / first) / std::log(1.0 * sizes.back() / sizes.front());
  std::printf("  exponent %.2f\n\n", exponent);
}

}  // namespace Growth
