// The moments of a predictor (x) and a continuous target (y) while cases are counted: as
// FSGroupSums, of one group of pairs.
#pragma once

#include <cstddef>
#include <cstdint>

#include "feature/accumulators/FSOpenPair.h"
#include "feature/accumulators/FSPairStats.h"
#include "feature/accumulators/FSScale.h"

class FSPairSums {
 public:
  // REQUIRES: valid values, a weight above 0.
  void Add(double x, double y, double weight);

  // Whether values that any scale of ordinary values fits may come in runs.
  bool IsOrdinary() const { return fScaleX.IsOrdinary() && fScaleY.IsOrdinary(); }
  // Makes the scales those of the first of n pairs whose x is valid, as Add would.
  void FitFirst(std::size_t n, const double* x, const double* y);
  // Whether the pairs that went through open sums are so many: all cases, of which each had a small
  // weight.
  bool HasAllOf(std::int64_t cases) const { return fNSummed == cases; }
  // Adds a whole piece of the target, of small weights (null: of 1), or nothing: an x is missing,
  // or does not fit. REQUIRES: HasAllOf the cases before it.
  bool AddPiece(const FSTargetPiece& piece, const double* x, const double* stepsY,
                const double* weights);

  // Adds the pairs of valid x, of small weights; returns how many x are missing.
  std::size_t AddRun(std::size_t n, const double* x, const double* y, const double* weights);

  void Settle();
  // REQUIRES: both are settled.
  void Merge(const FSPairSums& other);

  // REQUIRES: settled.
  const FSPairStats& GetMoments() const { return fMoments; }
  const FSScale& GetScaleX() const { return fScaleX; }
  const FSScale& GetScaleY() const { return fScaleY; }

  template <class Archive, class Self>
  static void MomentFields(Archive& archive, Self& self);
  template <class Archive, class Self>
  static void GrownFields(Archive& archive, Self& self, bool grown);
  // As it was saved: the weight of the pairs.
  void SetWeight(double weight) { fMoments.fWeight = weight; }

 private:
  // Adds pairs; returns how many: one of the next does not fit.
  std::size_t AddOrdinaryRun(std::size_t n, const double* x, const double* y,
                             const double* weights);
  void CloseIfFull() {
    if (fOpen.IsFull()) fMoments.Take(fOpen.Close());
  }

  FSScale fScaleX;
  FSScale fScaleY;
  FSPairStats fMoments;
  FSOpenPair fOpen;
  std::int64_t fNSummed = 0;  // pairs since the last Settle()
};
