#include "feature/statistics/FSLeaks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>

#include "common/MissingValue.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"

using MCCommon::LeakTally;
using MCCommon::LeakTraits;

namespace {

constexpr double kRounding = 1e-9;

// The share of the largest of some weights.
class Largest {
 public:
  void Add(double weight) {
    fTotal += weight;
    fLargest = std::max(fLargest, weight);
  }
  double Share() const { return fLargest / fTotal; }

 private:
  double fTotal = 0.0;
  double fLargest = 0.0;
};

LeakTally TallyGroups(const FSMapIStat& groups, double unit) {
  LeakTally tally(unit);
  for (const auto& [category, group] : groups) {
    tally.AddCategory(group.fWeight, group.fSquaredDeviations == 0.0);
  }
  return tally;
}

// The weight of each mean of a group. Where the groups are pure, their means are the values.
std::map<double, double> WeightsByMean(const FSMapIStat& groups) {
  std::map<double, double> weights;
  for (const auto& [category, group] : groups) weights[group.fMean.fValue] += group.fWeight;
  return weights;
}

template <class Weights>
double LargestShare(const Weights& weights) {
  Largest largest;
  for (const auto& [value, weight] : weights) largest.Add(weight);
  return largest.Share();
}

}  // namespace

LeakTraits FSLeaks::OfPairs(const FSMapICnt& targets, const FSMapPiCnt& pairs, double unit) {
  LeakTally tally(unit);
  for (std::size_t i = 0; i < pairs.Size();) {
    const std::size_t first = i;
    double weight = 0.0;
    for (; i < pairs.Size() && pairs[i].first.first == pairs[first].first.first; ++i) {
      weight += pairs[i].second;
    }
    tally.AddCategory(weight, i - first == 1);
  }
  return tally.Traits(LargestShare(targets));
}

LeakTraits FSLeaks::OfTargetByCategory(const FSMapIStat& groups, double unit) {
  return TallyGroups(groups, unit).Traits(LargestShare(WeightsByMean(groups)));
}

LeakTraits FSLeaks::OfPredictorByTarget(const FSMapIStat& groups, double unit, double variance) {
  Largest target;
  for (const auto& [category, group] : groups) target.Add(group.fWeight);
  LeakTraits traits = TallyGroups(groups, unit).Traits(target.Share());
  traits.fbDetermines = traits.fbDetermines && WeightsByMean(groups).size() == groups.Size();
  traits.fCategories = 0.0;
  traits.fVariance = variance;
  return traits;
}

LeakTraits FSLeaks::OfCorrelation(double r, double cases, double variance) {
  const bool isOne = !MCMV::IsMissing(r) && 1.0 - std::abs(r) <= kRounding;
  return {.fCases = cases, .fbDetermines = isOne, .fVariance = variance};
}
