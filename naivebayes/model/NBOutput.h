// One scored record: the probability of each target category, and the category that wins.
#pragma once

#include <vector>

class NBOutput {
 public:
  // Nothing scored yet: all probabilities 0, no winner (-1).
  explicit NBOutput(int targetCategories) : fvProbabilities(targetCategories, 0.0) {}

  void SetOutputs(const std::vector<double>& probabilities, int winner) {
    fvProbabilities = probabilities;
    fWinner = winner;
  }
  const std::vector<double>& GetOutProbabilities() const { return fvProbabilities; }
  int GetWinningIndex() const { return fWinner; }

 private:
  std::vector<double> fvProbabilities;
  int fWinner = -1;
};
