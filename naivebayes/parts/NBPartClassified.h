// How a part's cases, or those of all parts, were classified: case weight by observed and predicted
// category, of training cases and of test cases. A plain value.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <vector>

class NBOutputStatistics;

struct NBPartClassified {
  std::int64_t fNCases = 0;
  int fNTargets = 0;
  std::vector<double> fTraining;  // row by row of observed categories; empty for no case
  std::vector<double> fTest;

  // Null: nothing.
  void Take(const NBOutputStatistics* training, const NBOutputStatistics* test);
  // False for a part with another number of target categories.
  [[nodiscard]] bool Add(const NBPartClassified& other);
  void AddTo(bool training, NBOutputStatistics& stats) const;

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
