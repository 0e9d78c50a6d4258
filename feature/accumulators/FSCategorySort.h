// The cases of a block in the order of their small category, those of one category in the order
// that they have in the block.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"

class FSCategorySort {
 public:
  // The cases of a column. What is there before is forgotten.
  void Sort(const double* values, std::size_t n);

  const FSPlace* Order() const { return fOrder.data(); }
  const std::vector<FSCategoryRun>& Runs() const { return fRuns; }
  // The cases of other values.
  std::span<const FSPlace> Others() const { return fOthers; }

 private:
  // The cases are sorted in so many parts at once, so that none waits for the one before; behind
  // the small categories stand the others.
  static constexpr std::size_t kParts = 4;
  static constexpr std::size_t kPlaces = kFSSmallCategories + 1;

  std::vector<std::uint8_t> fPlaceOf;  // by case
  std::array<std::array<FSPlace, kPlaces>, kParts> fPlaces;
  std::vector<FSPlace> fOrder;
  std::vector<FSCategoryRun> fRuns;
  std::span<const FSPlace> fOthers;
};
