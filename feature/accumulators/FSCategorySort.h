// The cases of a block in the order of their small category, those of one category in the order
// that they have in the block.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"

class FSCategorySort {
 public:
  // Categories of cases. What is there before is forgotten.
  void Sort(std::span<const int> categories);
  // Those of a column, whose missing values are category -1.
  void SortColumn(const double* values, std::size_t n);

  const std::uint32_t* Order() const { return fOrder.data(); }
  const std::vector<FSCategoryRun>& Runs() const { return fRuns; }
  // The cases of categories that are not small.
  std::span<const std::uint32_t> Others() const { return fOthers; }

 private:
  // The cases are sorted in so many parts at once, so that none waits for the one before; behind
  // the small categories stand the others.
  static constexpr std::size_t kParts = 4;
  static constexpr std::size_t kPlaces = kFSSmallCategories + 1;

  static std::size_t PlaceOf(int category) {
    return std::min<std::size_t>(static_cast<unsigned>(category), kFSSmallCategories);
  }

  std::vector<int> fCategories;  // of a column
  std::array<std::array<std::uint32_t, kPlaces>, kParts> fPlaces;
  std::vector<std::uint32_t> fOrder;
  std::vector<FSCategoryRun> fRuns;
  std::span<const std::uint32_t> fOthers;
};
