#include "feature/accumulators/FSCategorySort.h"

#include <utility>

#include "feature/accumulators/FSLoops.h"

// Counting sort.
void FSCategorySort::Sort(const double* values, std::size_t n) {
  fPlaceOf.resize(n);
  FSLoops::InUse().fFindPlaces(values, n, fPlaceOf.data());
  const std::size_t length = n / kParts;
  const auto forEachCase = [&](auto take) {
    for (std::size_t i = 0; i < length; ++i) {
      for (std::size_t part = 0; part < kParts; ++part) {
        const std::size_t at = part * length + i;
        take(at, fPlaces[part][fPlaceOf[at]]);
      }
    }
    for (std::size_t at = kParts * length; at < n; ++at) {
      take(at, fPlaces[kParts - 1][fPlaceOf[at]]);
    }
  };
  fPlaces = {};
  forEachCase([](std::size_t, FSPlace& count) { ++count; });
  fRuns.clear();
  FSPlace begin = 0;
  for (std::size_t k = 0; k < kPlaces; ++k) {
    const FSPlace first = begin;
    for (auto& places : fPlaces) begin += std::exchange(places[k], begin);
    if (begin > first) fRuns.push_back({static_cast<int>(k), first, begin});
  }
  fOrder.resize(n);
  forEachCase(
      [this](std::size_t at, FSPlace& place) { fOrder[place++] = static_cast<FSPlace>(at); });
  fOthers = {};
  if (fRuns.empty() || fRuns.back().fCategory < kFSSmallCategories) return;
  fOthers = std::span(fOrder).subspan(fRuns.back().fBegin);
  fRuns.pop_back();
}
