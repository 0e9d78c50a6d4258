// Codes that are kept for several passes. The blocks of every pass are the same.
#pragma once

#include <vector>

#include "naivebayes/store/NBCodeSource.h"

class NBCodeStore : public NBCodeSource {
 public:
  // Goes back to the first case; false when the store cannot be read again.
  [[nodiscard]] virtual bool NewPass() = 0;

  // Forgets all inputs but these, given by their present positions in ascending order.
  virtual void KeepInputs(const std::vector<int>& inputs) = 0;
};
