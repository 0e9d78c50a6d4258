// The moments of a value by category while cases are counted: values of small weights in small
// categories go through sums that stay open for a while, others into the moments one by one.
// Settle() closes what is open; before that the moments are not whole.
//
// The sums are in units of a scale that grows when a value does not fit it.
#pragma once

#include <cstddef>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSOpenGroup.h"
#include "feature/accumulators/FSRun.h"
#include "feature/accumulators/FSScale.h"
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

  // Whether AddOrdinary may be used, and runs are taken at once.
  bool IsOrdinary() const { return fScale.IsOrdinary(); }
  // Makes the scale that of the first of n values, as Add would; valueAt(k) is 0 for none.
  template <class ValueAt>
  void FitFirst(std::size_t n, ValueAt valueAt) {
    fScale.FitFirst(n, valueAt);
  }

  // Add for a value that any scale of ordinary values fits, of small weight, in a small category.
  void AddOrdinary(int category, double x, double weight) { GroupOf(category).Add(x, weight); }

  // Adds the valid values of a run of small weights to a small category; returns how many are
  // missing.
  std::size_t AddRun(int category, std::size_t n, const FSRun& run);

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
  // Adds values of a run; returns how many: one of the next is missing, or does not fit the scale.
  std::size_t AddOrdinaryRun(int category, std::size_t n, const FSRun& run);

  FSScale fScale;
  FSMapIStat fMoments;
  std::vector<Small> fSmall;  // by category
};
