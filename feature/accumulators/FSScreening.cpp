#include "feature/accumulators/FSScreening.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "feature/FSSettings.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/FSPredictorState.h"

using namespace MCFSCommon;

namespace FSScreening {

namespace {

// A limit of 1 (100 percent) switches its rule off.
bool IsAbove(double fraction, double limit) { return limit < 1.0 && fraction > limit; }

// Below the minimum by more than rounding.
bool IsBelow(double value, double minimum) {
  const double gap = minimum - value;
  return minimum > 0.0 && gap > 0.0 && gap / minimum > std::numeric_limits<double>::epsilon();
}

void CheckMissing(const FSSettings& settings, const FSPredictorState& state,
                  std::vector<int>& reasons) {
  if (!settings.IsDeleteManyMissing() || !(state.GetTotalWeight() > 0.0)) return;
  if (IsAbove(state.GetMissingWeight() / state.GetTotalWeight(), settings.GetMaxMissFraction())) {
    reasons.push_back(kManyMissing);
  }
}

double LargestShare(const FSMapICnt& counts) {
  double sum = 0.0;
  double largest = 0.0;
  for (const auto& [category, count] : counts) {
    sum += count;
    largest = std::max(largest, count);
  }
  return largest / sum;
}

double ShareWithOneCase(const FSMapICnt& counts) {
  const auto ones = std::count_if(counts.begin(), counts.end(),
                                  [](const auto& entry) { return entry.second == 1.0; });
  return static_cast<double>(ones) / static_cast<double>(counts.Size());
}

}  // namespace

void CheckCategorical(const FSSettings& settings, const FSPredictorState& state,
                      const FSMapICnt& counts, bool oneCaseRule, std::vector<int>& reasons) {
  CheckMissing(settings, state, reasons);
  if (counts.Size() == 0) return;
  if (settings.IsDeleteManySingle() &&
      IsAbove(LargestShare(counts), settings.GetMaxSingleFraction())) {
    reasons.push_back(kManyInSingleCategory);
  }
  const double perCase =
      static_cast<double>(counts.Size()) / static_cast<double>(state.GetNValidCases());
  if (settings.IsDeleteManyCategories() && IsAbove(perCase, settings.GetMaxNCatFraction())) {
    reasons.push_back(kManyCategories);
  }
  if (oneCaseRule && settings.IsDeleteManyOneCase() &&
      IsAbove(ShareWithOneCase(counts), settings.GetMaxOneCaseFraction())) {
    reasons.push_back(kManyCategoriesWithOneCase);
  }
}

void CheckContinuous(const FSSettings& settings, const FSPredictorState& state, double mean,
                     double stddev, std::vector<int>& reasons) {
  CheckMissing(settings, state, reasons);
  if (state.GetTotalWeight() > 0.0 && state.IsAllMissing()) return;
  if (settings.IsDeleteSmallStddev() && IsBelow(stddev, settings.GetMinStddev())) {
    reasons.push_back(kSmallStddev);
  }
  if (settings.IsDeleteSmallVariation() && stddev != 0.0 && mean != 0.0 &&
      IsBelow(std::abs(stddev / mean), settings.GetMinVariation())) {
    reasons.push_back(kSmallVariation);
  }
}

}  // namespace FSScreening
