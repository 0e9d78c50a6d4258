#include "feature/accumulators/FSGroupSums.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "common/MissingValue.h"

std::size_t FSGroupSums::AddOrdinaryRun(int category, std::size_t n, const FSRun& run) {
  if (!IsOrdinary()) return 0;
  Small& group = GroupOf(category);
  std::size_t taken = 0;
  while (taken < n) {
    const std::size_t more = group.fOpen.AddRun(n - taken, run.From(taken));
    if (more == 0) break;
    taken += more;
    if (group.fOpen.IsFull()) group.Close();
  }
  return taken;
}

std::size_t FSGroupSums::AddRun(int category, std::size_t n, const FSRun& run) {
  std::size_t k = AddOrdinaryRun(category, n, run);
  std::size_t missing = 0;
  std::array<double, 256> values, weights;
  while (k < n) {
    std::size_t valid = 0;
    const std::size_t end = std::min(n, k + values.size());
    missing += end - k;
    for (; k < end; ++k) {
      values[valid] = run.ValueAt(k);
      weights[valid] = run.WeightAt(k);
      valid += MCMV::IsMissing(values[valid]) ? 0 : 1;
    }
    missing -= valid;
    std::size_t taken = AddOrdinaryRun(category, valid, {values.data(), weights.data()});
    for (; taken < valid; ++taken) Add(category, values[taken], weights[taken]);
  }
  return missing;
}

void FSGroupSums::Settle() {
  for (std::size_t k = 0; k < fSmall.size(); ++k) {
    Small& group = fSmall[k];
    if (!group.fOpen.IsEmpty()) group.Close();
    if (group.fMoments.fWeight > 0.0) fMoments.Take(static_cast<int>(k), group.fMoments);
  }
  std::vector<Small>().swap(fSmall);
}

void FSGroupSums::Coarsen(int by) {
  for (Small& group : fSmall) {
    group.fOpen.Coarsen(by);
    group.fMoments.Coarsen(by);
  }
  fMoments.Coarsen(by);
}

void FSGroupSums::Merge(const FSGroupSums& other, const FSRecode& recode) {
  if (const int by = fScale.FitFor(other.fScale); by != 0) Coarsen(by);
  fMoments.Merge(other.fMoments, recode, fScale.GetExponent() - other.fScale.GetExponent());
}

std::vector<FSProfile::Group> FSGroupSums::Groups() const {
  std::vector<FSProfile::Group> groups;
  for (const auto& [category, group] : fMoments) {
    groups.push_back({category, group.fWeight, fScale.Back(group.fMean.fValue),
                      fScale.Back(std::sqrt(group.fVariance))});
  }
  return groups;
}
