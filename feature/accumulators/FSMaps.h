// Counts by category. Each entry operation returns true when the key was there and false
// when it was entered. Merge takes in the counts of another part of the
// data. Saved state and Display: as for IFSPredTargetAccum.
#pragma once

#include <iosfwd>
#include <utility>

#include "feature/accumulators/FSRecode.h"
#include "feature/accumulators/FSRun.h"
#include "feature/accumulators/FSSortedMap.h"

// Weighted count per category.
class FSMapICnt : public FSSortedMap<int, double> {
 public:
  bool IncrementByFreq(int key, double w) {
    const auto [at, found] = Place(key, w);
    if (found) ValueAt(at) += w;
    return found;
  }

  void Merge(const FSMapICnt& other, const FSRecode& recode) {
    for (const auto& [key, w] : other) IncrementByFreq(recode(key), w);
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

// Unweighted and weighted count per category.
class FSMapIPCnt : public FSSortedMap<int, std::pair<int, double>> {
 public:
  bool IncrementByFreq(int key, double w) {
    const auto [at, found] = Place(key, {1, w});
    if (found) {
      ++ValueAt(at).first;
      ValueAt(at).second += w;
    }
    return found;
  }

  void Add(int key, const std::pair<int, double>& counts) {
    auto& [n, weight] = ValueAt(Place(key, {0, 0.0}).first);
    n += counts.first;
    weight += counts.second;
  }

  // Cases one by one, of the weights of a run.
  void AddRun(int key, std::size_t cases, const FSRun& run) {
    auto& [n, weight] = ValueAt(Place(key, {0, 0.0}).first);
    n += static_cast<int>(cases);
    if (run.fpWeights == nullptr && FSIsWhole(weight)) {
      weight += static_cast<double>(cases);
    } else {
      for (std::size_t k = 0; k < cases; ++k) weight += run.WeightAt(k);
    }
  }

  void Merge(const FSMapIPCnt& other, const FSRecode& recode) {
    for (const auto& [key, counts] : other) Add(recode(key), counts);
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

// Weighted count per pair of predictor and target category.
class FSMapPiCnt : public FSSortedMap<std::pair<int, int>, double> {
 public:
  bool IncrementByFreq(const std::pair<int, int>& key, double w) {
    const auto [at, found] = Place(key, w);
    if (found) ValueAt(at) += w;
    return found;
  }

  void Merge(const FSMapPiCnt& other, const FSRecode& first, const FSRecode& second) {
    for (const auto& [key, w] : other) {
      IncrementByFreq({first(key.first), second(key.second)}, w);
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
