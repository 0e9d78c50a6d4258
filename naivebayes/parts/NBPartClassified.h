// How a part's cases, or those of all parts, were classified: case weight by observed and predicted
// category, of training cases and of test cases; and what was asked for of their evaluation and of
// the curves of their probabilities. A plain value.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <optional>
#include <vector>

#include "common/evaluation/EvaluationCounter.h"
#include "common/evaluation/ScoreCurves.h"

class NBOutputStatistics;

struct NBPartClassified {
  std::int64_t fNCases = 0;
  int fNTargets = 0;
  std::vector<double> fTraining;  // row by row of observed categories; empty for no case
  std::vector<double> fTest;
  std::optional<MCCommon::EvaluationCounter> fEvaluation;
  std::optional<MCCommon::ScoreCurves> fCurves[2];  // of test and training cases

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
