// What is asked of every part in one pass of a command. A plain value.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

struct PartRequest {
  // Do not renumber.
  enum Kind {
    kCount = 1,    // the counts of a ranking
    kBins = 2,     // the same for numbers that are cut into bins: fNumbers are the predictors
    kLook = 3,     // what a model needs to know before: screening, training and test cases
    kEncode = 4,   // a model's counts, and the cases as codes: fNumbers as of kLook's outcome
    kSteps = 5,    // of the codes: sums of the candidates of a step
    kTerms = 6,    // of the codes: sums of subsets by size
    kClassify = 7  // the cases of the scoring pass: fContent is the model
  };

  Kind fKind = kCount;
  std::uint64_t fRanges = 0;  // the digest of the ranges
  std::string fCommand;
  std::vector<std::pair<std::string, std::vector<std::string>>> fMacros;  // that it may name
  std::vector<int> fNumbers;
  std::string fContent;
  bool fbFindings = false;  // kClassify: with the curves that findings show

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
