// Weight, mean, squared deviations and variance of a value per category, in category order.
#pragma once

#include <cmath>
#include <iosfwd>

#include "feature/accumulators/FSMoments.h"
#include "feature/accumulators/FSRecode.h"
#include "feature/accumulators/FSSortedMap.h"

struct FSGroupStats {
  double fWeight = 0.0;
  double fMean = 0.0;
  double fSquaredDeviations = 0.0;
  double fVariance = 0.0;

  // Turns the moments of values into those of values divided by 2^by.
  void Coarsen(int by) {
    fMean = std::ldexp(fMean, -by);
    fSquaredDeviations = std::ldexp(fSquaredDeviations, -2 * by);
  }

  // Takes a value x with weight w > 0.
  void Add(double x, double w) {
    if (fWeight == 0.0) {
      fMean = x;
    } else {
      const double step = FSMeanStep(x, fMean, fWeight, w);
      fMean += step;
      fSquaredDeviations += FSDeviationStep(step, step, fWeight, w);
    }
    fWeight += w;
  }
};

// The moments of two parts together; the variance is left to be computed.
inline FSGroupStats FSTogether(const FSGroupStats& a, const FSGroupStats& b) {
  FSGroupStats both;
  both.fWeight = a.fWeight + b.fWeight;
  both.fMean = FSMeanOfParts(a.fMean, a.fWeight, b.fMean, b.fWeight);
  const double distance = b.fMean - a.fMean;
  both.fSquaredDeviations = a.fSquaredDeviations + b.fSquaredDeviations +
                            FSDeviationOfParts(distance, distance, a.fWeight, b.fWeight);
  return both;
}

class FSMapIStat : public FSSortedMap<int, FSGroupStats> {
 public:
  using stats = FSGroupStats;

  // Takes a value x with weight w into the category. A weight that is not positive is ignored
  // (false). True when the category was there, false when it was entered.
  bool Accumulate(int key, double x, double w) {
    if (!(w > 0.0)) return false;
    const auto [at, found] = Place(key, stats());
    ValueAt(at).Add(x, w);
    return found;
  }

  // Takes in the groups of another part of the data, of values that are to be divided by 2^coarser.
  void Merge(const FSMapIStat& other, const FSRecode& recode, int coarser) {
    for (const auto& [key, group] : other) {
      const auto at = Place(recode(key), stats()).first;
      stats theirs = group;
      theirs.Coarsen(coarser);
      ValueAt(at) = FSTogether(ValueAt(at), theirs);
    }
  }

  // Of values divided by 2^by.
  void Coarsen(int by) {
    for (Entry& entry : Entries()) entry.second.Coarsen(by);
  }

  // Squared deviations / (weight - 1) for every category, 0 where the weight is not above 1.
  void ComputeVariances() {
    for (Entry& entry : Entries()) {
      stats& group = entry.second;
      group.fVariance = FSVariance(group.fSquaredDeviations, group.fWeight, 0.0);
    }
  }

  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
  void Display(std::ostream& out) const;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
};
