#include "feature/statistics/FSAdjust.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "common/MissingValue.h"

namespace FSAdjust {

namespace {

// The marker of a missing value; the logarithm of zero, -infinity, is a value here.
bool IsMissing(double logP) { return logP == MCMV::gMissingValue || std::isnan(logP); }

// Places of the tests, the smallest p-value first.
std::vector<std::size_t> Ascending(const std::vector<double>& logP) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < logP.size(); ++i) {
    if (!IsMissing(logP[i])) places.push_back(i);
  }
  std::stable_sort(places.begin(), places.end(),
                   [&](std::size_t a, std::size_t b) { return logP[a] < logP[b]; });
  return places;
}

}  // namespace

std::vector<double> BenjaminiHochberg(const std::vector<double>& logP) {
  const std::vector<std::size_t> places = Ascending(logP);
  std::vector<double> adjusted(logP.size(), MCMV::gMissingValue);
  double least = 0.0;
  for (std::size_t rank = places.size(); rank > 0; --rank) {
    const std::size_t place = places[rank - 1];
    const double factor = static_cast<double>(places.size()) / static_cast<double>(rank);
    least = std::min(least, logP[place] + std::log(factor));
    adjusted[place] = least;
  }
  return adjusted;
}

std::vector<double> Holm(const std::vector<double>& logP) {
  const std::vector<std::size_t> places = Ascending(logP);
  std::vector<double> adjusted(logP.size(), MCMV::gMissingValue);
  double most = -std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < places.size(); ++i) {
    const auto left = static_cast<double>(places.size() - i);
    most = std::max(most, std::min(logP[places[i]] + std::log(left), 0.0));
    adjusted[places[i]] = most;
  }
  return adjusted;
}

}  // namespace FSAdjust
