// The target's table: case weight by target category in training, and the priors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <vector>

#include "naivebayes/variables/INBVariable.h"

namespace MCCommonXML {
class XMLElement;
}

class NBayesOutput {
 public:
  // An empty table for so many target categories.
  void Setup(int targetCategories);
  // The target, which stays its list's.
  void SetVariable(INBVariable* variable) { fpVariable = variable; }
  INBVariable* GetVariable() const { return fpVariable; }

  // Pi(k) = (N(k) + 1/N) / (N + K'/N), K' the target categories with a count; also for categories
  // without one. Returns K'.
  int ComputeProbabilities(double totalWeight);

  void ResetCounts();
  // REQUIRES: targets within the table.
  void AddCases(const std::int32_t* targets, const double* weights, std::size_t cases);
  // Adds counts that were made elsewhere: weight and records by target category.
  // REQUIRES: as many as there are categories.
  void AddCounts(const std::vector<double>& weights, const std::vector<std::int64_t>& records);
  // Adds the counts of another model and returns, for each of its target categories, the category
  // here that stands for the same value.
  std::vector<int> MergeTargetCounts(const NBayesOutput& other);

  int GetNCategories() const { return static_cast<int>(fvCounts.size()); }
  double GetCount(int category) const { return fvCounts[category]; }
  // The training records of a category; -1 when not known.
  int GetRecords(int category) const {
    return fvRecords.empty() ? -1 : static_cast<int>(fvRecords[category]);
  }
  const std::vector<double>& GetPriors() const { return fvPriors; }

  // The target in a model document: a BayesOutput with the count of every category. Throws XMLError
  // for a text or number that XML cannot hold.
  std::unique_ptr<MCCommonXML::XMLElement> ExportOutputXML() const;

  // As INBUserMissing says. The variable is not part of the state.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

  void Display(std::ostream& os) const;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  void MergeRecords(const NBayesOutput& other, const std::vector<int>& map);

  INBVariable* fpVariable = nullptr;
  std::vector<double> fvCounts;
  std::vector<double> fvPriors;
  std::vector<std::int32_t> fvRecords;  // not part of the state: empty after reading it
};
