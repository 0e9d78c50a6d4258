#include "feature/accumulators/FSCategorySort.h"

#include <utility>

#include "common/MissingValue.h"

// Counting sort.
void FSCategorySort::Sort(std::span<const int> categories) {
  const std::size_t n = categories.size(), length = n / kParts;
  const auto forEachCase = [&](auto take) {
    for (std::size_t i = 0; i < length; ++i) {
      for (std::size_t part = 0; part < kParts; ++part) {
        const std::size_t at = part * length + i;
        take(at, fPlaces[part][PlaceOf(categories[at])]);
      }
    }
    for (std::size_t at = kParts * length; at < n; ++at) {
      take(at, fPlaces[kParts - 1][PlaceOf(categories[at])]);
    }
  };
  fPlaces = {};
  forEachCase([](std::size_t, std::uint32_t& count) { ++count; });
  fRuns.clear();
  std::uint32_t begin = 0;
  for (std::size_t k = 0; k < kPlaces; ++k) {
    const std::uint32_t first = begin;
    for (auto& places : fPlaces) begin += std::exchange(places[k], begin);
    if (begin > first) fRuns.push_back({static_cast<int>(k), first, begin});
  }
  fOrder.resize(n);
  forEachCase([this](std::size_t at, std::uint32_t& place) {
    fOrder[place++] = static_cast<std::uint32_t>(at);
  });
  fOthers = {};
  if (fRuns.empty() || fRuns.back().fCategory < kFSSmallCategories) return;
  fOthers = std::span(fOrder).subspan(fRuns.back().fBegin);
  fRuns.pop_back();
}

void FSCategorySort::SortColumn(const double* values, std::size_t n) {
  fCategories.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    fCategories[i] = MCMV::IsMissing(values[i]) ? -1 : FSCategory(values[i]);
  }
  Sort(fCategories);
}
