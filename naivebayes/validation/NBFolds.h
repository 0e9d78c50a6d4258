// Deals cases into folds: those of each class at random, so that every fold has its share of them.
#pragma once

#include <cstdint>
#include <vector>

namespace NBFolds {

// The fold of each case, of which these are the classes. The same for the same seed on every
// machine; folds differ by one case at most, and so do their numbers of cases of a class.
std::vector<std::int32_t> Deal(const std::vector<std::int32_t>& targets, int folds,
                               std::uint64_t seed);

}  // namespace NBFolds
