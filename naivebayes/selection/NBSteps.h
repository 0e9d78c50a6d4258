// What a forward step compares its candidates by, found from the training records or from simulated
// ones.
#pragma once

#include <vector>

class NBSteps {
 public:
  virtual ~NBSteps() = default;

  // Takes an input into the current subset, which is empty at first.
  virtual void Enter(int input) = 0;

  // The term of the current subset with each candidate, less what all of them have in common: the
  // differences decide, and a large number in common would take their digits away. False when the
  // records could not be read. After a cancel the terms are of no use.
  [[nodiscard]] virtual bool ComputeBJ(const std::vector<int>& candidates, std::vector<double>& out,
                                       double& common) = 0;
};
