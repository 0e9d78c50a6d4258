#include "feature/accumulators/FSGroupSums.h"

#include <cmath>

void FSGroupSums::Settle() {
  for (std::size_t k = 0; k < fSmall.size(); ++k) {
    Small& group = fSmall[k];
    if (!group.fOpen.IsEmpty()) group.Close();
    if (group.fMoments.fWeight > 0.0) fMoments.Take(static_cast<int>(k), group.fMoments);
  }
  fSmall = {};
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
