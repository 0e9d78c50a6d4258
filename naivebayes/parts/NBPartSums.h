// What is asked of the codes of a part while predictors are chosen, and what it answers: sums over
// its cases of the terms of log-likelihoods. Plain values.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <vector>

#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/parts/NBPartCounts.h"

struct NBPartQuestion {
  NBPartCounts fModel;           // of all parts; tables of the inputs that are named here
  std::vector<int> fOrder;       // inputs in order of entry
  std::vector<int> fCandidates;  // a step: each of them beside all of those
  int fFirst = 0;                // else: the sizes of subset from here on
  bool fbTest = false;           // of the test cases instead of the training cases

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};

struct NBPartSums {
  std::int64_t fNCases = 0;
  NBSum fWeight;
  std::vector<NBSum> fSums;  // by candidate, or by size

  // Adds sums of other cases. REQUIRES: as many.
  void Add(const NBPartSums& other);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
