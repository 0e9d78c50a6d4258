// What a part of the training cases counts for a model, before any predictor is chosen or dropped:
// the joint table of every candidate with the target. All that a model of any subset needs, and
// what the parts of a table add up to.
//
// A plain value; tables are stored as those of NBayesInputBase.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <vector>

struct NBPartCounts {
  std::int64_t fNCases = 0;    // of the part, those that train nothing among them
  std::int64_t fNTest = 0;     // of these are valid test cases
  std::int64_t fNRecords = 0;  // train the model
  double fWeight = 0;
  std::int64_t fNExcluded = 0;
  double fExcludedWeight = 0;
  std::vector<double> fTarget;               // weight by target category
  std::vector<std::int64_t> fRecords;        // records by target category
  std::vector<int> fCategories;              // of each input
  std::vector<std::vector<double>> fInputs;  // empty for one that nobody asks for

  bool HasShapeOf(const NBPartCounts& other) const;
  // REQUIRES: of one shape.
  void Add(const NBPartCounts& other);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
