// The moments of a value by category while cases are counted: values of small weights in small
// categories go through sums that stay open for a while, others into the moments one by one.
// Settle() closes what is open; before that the moments are not whole.
//
// The sums are in units of a scale that grows when a value does not fit it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSOpenGroup.h"
#include "feature/accumulators/FSScale.h"
#include "feature/accumulators/FSWalkBlock.h"
#include "feature/statistics/FSProfile.h"

class FSGroupSums {
 public:
  // REQUIRES: a valid value, a weight above 0.
  void Add(int category, double x, double weight) {
    if (const int by = fScale.FitFor(x); by != 0) Coarsen(by);
    if (!FSIsSmall(category)) {
      fMoments.Take(category, {weight, {fScale(x)}});
    } else if (FSIsSmallWeight(weight)) {
      GroupOf(category).Add(fScale(x), weight);
    } else {
      GroupOf(category).fMoments.Take({weight, {fScale(x)}});
    }
  }

  // Whether AddOrdinary and AddRun may be used.
  bool IsOrdinary() const { return fScale.IsOrdinary(); }

  // Add for a value that any scale of ordinary values fits, of weight 1, in a small category.
  void AddOrdinary(int category, double x) { GroupOf(category).Add(x, 1.0); }

  // Adds at(0) .. at(n - 1), of weight 1, to a small category. Returns how many it has taken: one
  // of the next is missing, or does not fit the scale.
  template <class At>
  std::size_t AddRun(int category, std::size_t n, At at) {
    Small& group = GroupOf(category);
    std::size_t taken = 0;
    while (taken < n) {
      const std::size_t more =
          group.fOpen.AddRun(n - taken, [&](std::size_t k) { return at(taken + k); });
      if (more == 0) break;
      taken += more;
      if (group.fOpen.IsFull()) group.Close();
    }
    return taken;
  }

  // Adds the valid values of a run; returns how many are missing.
  template <class At>
  std::size_t AddRunWithGaps(int category, std::size_t n, At at) {
    std::size_t k = IsOrdinary() ? AddRun(category, n, at) : 0;
    std::size_t missing = 0;
    std::array<double, 256> values;
    while (k < n) {
      std::size_t valid = 0;
      const std::size_t end = std::min(n, k + values.size());
      missing += end - k;
      for (; k < end; ++k) {
        values[valid] = at(k);
        valid += FSIsValidNumber(values[valid]) ? 1 : 0;
      }
      missing -= valid;
      const auto validAt = [&](std::size_t i) { return values[i]; };
      std::size_t taken = IsOrdinary() ? AddRun(category, valid, validAt) : 0;
      for (; taken < valid; ++taken) Add(category, values[taken], 1.0);
    }
    return missing;
  }

  void Settle();
  void ComputeVariances() { fMoments.ComputeVariances(); }
  void Coarsen(int by);
  // REQUIRES: both are settled.
  void Merge(const FSGroupSums& other, const FSRecode& recode);

  // A group as it was saved.
  void Restore(int category, const FSGroupStats& group) { fMoments.Take(category, group); }

  // REQUIRES: settled.
  const FSMapIStat& GetMoments() const { return fMoments; }
  const FSScale& GetScale() const { return fScale; }
  // The groups in units of the values. REQUIRES: variances are computed.
  std::vector<FSProfile::Group> Groups() const;

  template <class Archive, class Self>
  static void MomentFields(Archive& archive, Self& self);
  template <class Archive, class Self>
  static void ScaleField(Archive& archive, Self& self, bool grown);

 private:
  // A small category in the current pass.
  struct Small {
    FSOpenGroup fOpen;
    FSGroupStats fMoments;

    void Add(double x, double weight) {
      fOpen.Add(x, weight);
      if (fOpen.IsFull()) Close();
    }
    void Close() { fMoments.Take(fOpen.Close()); }
  };
  Small& GroupOf(int category) {
    const auto at = static_cast<std::size_t>(category);
    if (at >= fSmall.size()) [[unlikely]]
      fSmall.resize(at + 1);
    return fSmall[at];
  }

  FSScale fScale;
  FSMapIStat fMoments;
  std::vector<Small> fSmall;  // by category
};
