// What one part of a table, or several, have counted for a model of all their predictors: the
// counts before any predictor is dropped, in the categories and bins of the whole. Parts of one
// table always add up, whatever is constant or missing in some of them, and the model is made of
// the sum.
//
// A plain value; saved as "NBPartModel 1.00".
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/parts/NBPartCounts.h"
#include "naivebayes/variables/NBVarList.h"

class INBAlgorithm;

struct NBPartModel {
  std::uint64_t fRanges = 0;         // the digest of the ranges that all parts were counted with
  std::vector<std::int64_t> fParts;  // numbers of parts, ascending: those that have one
  NaiveBayesSettings fSettings;
  NBVarList fVarList;
  NBPartCounts fCounts;

  // Adds what other parts have counted. Empty, or why they are not of the same model, or are there
  // already; nothing has changed then.
  [[nodiscard]] std::string Add(const NBPartModel& other);

  // The model of what was counted, as a run over all these cases builds it. Null for fewer than two
  // of them.
  std::unique_ptr<INBAlgorithm> Build() const;

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  // Whether there is a table for every predictor, as large as its categories ask for, and the
  // target's counts add up.
  bool HasTablesOfVariables() const;
};
