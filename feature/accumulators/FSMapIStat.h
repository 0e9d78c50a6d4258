// Weight, mean, squared deviations and variance of a value per category, in category order.
#pragma once

#include <iosfwd>

#include "feature/accumulators/FSGroupStats.h"
#include "feature/accumulators/FSRecode.h"
#include "feature/accumulators/FSSortedMap.h"

class FSMapIStat : public FSSortedMap<int, FSGroupStats> {
 public:
  using stats = FSGroupStats;

  // Takes a value x with weight w into the category. A weight that is not positive is ignored
  // (false). True when the category was there, false when it was entered.
  bool Accumulate(int key, double x, double w) {
    if (!(w > 0.0)) return false;
    return Take(key, {w, {x}});
  }
  // Takes a part of the category's values in. The same result.
  bool Take(int key, const stats& part) {
    const auto [at, found] = Place(key, stats());
    ValueAt(at).Take(part);
    return found;
  }

  // Takes in the groups of another part of the data, of values that are to be divided by 2^coarser.
  void Merge(const FSMapIStat& other, const FSRecode& recode, int coarser) {
    for (const auto& [key, group] : other) {
      stats theirs = group;
      theirs.Coarsen(coarser);
      Take(recode(key), theirs);
    }
  }

  // Of values divided by 2^by.
  void Coarsen(int by) {
    for (Entry& entry : Entries()) entry.second.Coarsen(by);
  }

  // Squared deviations / (weight - 1) for every category, 0 where the weight is not above 1.
  void ComputeVariances() {
    for (Entry& entry : Entries()) entry.second.ComputeVariance();
  }

  // The moments of all categories together.
  stats Together() const {
    stats all;
    for (const auto& [category, group] : *this) all.Take(group);
    all.ComputeVariance();
    return all;
  }

  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
  void Display(std::ostream& out) const;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self, bool grown);
  // Whether a mean has digits beyond those of a double.
  bool IsGrown() const;
};
