// The records of a selection where they lie in parts: serves the steps, and the log-likelihoods of
// subsets, each by one pass over the codes of the parts.
#pragma once

#include <vector>

#include "naivebayes/parts/INBParts.h"
#include "naivebayes/selection/NBSteps.h"

class NBPartsOfSelection : public NBSteps {
 public:
  // The counts are those of all parts; `kept`: the model's inputs by their places among those that
  // were counted. The parts stay the caller's.
  NBPartsOfSelection(INBParts& parts, NBPartCounts counts, std::vector<int> kept);

  void Enter(int input) override { fvCurrent.push_back(input); }
  [[nodiscard]] bool ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                               double& common) override;

  // As NBSizeTerms::Sum, over the training cases or the test cases.
  [[nodiscard]] bool SumTerms(const std::vector<int>& order, int first, bool test,
                              std::vector<double>& totals, NBSum& weight);

 private:
  // A question about these inputs of the model.
  NBPartQuestion QuestionOn(const std::vector<int>& order,
                            const std::vector<int>& candidates) const;
  bool Ask(const NBPartQuestion& question, std::size_t sums, std::vector<double>& totals,
           NBSum& weight);

  INBParts& fParts;
  NBPartCounts fCounts;
  std::vector<int> fvKept;
  std::vector<int> fvCurrent;
};
