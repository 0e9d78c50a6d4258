#include "naivebayes/validation/NBFolds.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>

namespace NBFolds {

std::vector<std::int32_t> Deal(const std::vector<std::int32_t>& targets, int folds,
                               std::uint64_t seed) {
  std::vector<std::vector<std::size_t>> byClass;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const auto k = static_cast<std::size_t>(targets[i]);
    if (k >= byClass.size()) byClass.resize(k + 1);
    byClass[k].push_back(i);
  }
  std::mt19937_64 random(seed);
  std::vector<std::int32_t> dealt(targets.size(), 0);
  std::int32_t next = 0;
  for (std::vector<std::size_t>& cases : byClass) {
    // The standard library's shuffle is not the same everywhere.
    for (std::size_t i = cases.size(); i > 1; --i) std::swap(cases[i - 1], cases[random() % i]);
    for (const std::size_t i : cases) {
      dealt[i] = next;
      next = (next + 1) % folds;
    }
  }
  return dealt;
}

}  // namespace NBFolds
