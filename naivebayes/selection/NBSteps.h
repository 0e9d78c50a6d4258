// What a forward step compares its candidates by: the terms B of the current subset with each of
// them, found from the training records or from simulated ones.
#pragma once

#include <vector>

class NBSteps {
 public:
  virtual ~NBSteps() = default;

  // Takes an input into the current subset, which is empty at first.
  virtual void Enter(int input) = 0;

  // B of the current subset with each candidate; false when the records could not be read. After a
  // cancel the terms are of no use.
  [[nodiscard]] virtual bool ComputeBJ(const std::vector<int>& candidates,
                                       std::vector<double>& out) = 0;
};
