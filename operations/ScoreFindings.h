// The findings of predictions: how often each class was predicted, and how surely.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class INBVariable;
class NBScoredBlock;

namespace PredSelect {

class ScoreFindings {
 public:
  // The target of the model is borrowed.
  explicit ScoreFindings(const INBVariable& target);

  void Count(const NBScoredBlock& scored);

  // As JSON text: docs/report.md.
  std::string Text() const;

 private:
  const INBVariable& fTarget;
  std::vector<std::int64_t> fPredicted;  // cases by class
  std::vector<double> fProbabilities;    // sums by class
  std::vector<std::int64_t> fSureness;   // cases by the probability of their class
  std::int64_t fNCases = 0;
};

}  // namespace PredSelect
