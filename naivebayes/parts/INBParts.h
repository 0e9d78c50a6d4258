// The training cases of a model where they lie in parts elsewhere: what the engine asks of them.
//
// An application implements it. Each operation is one pass over all parts; false where that failed
// or was cancelled, which whoever implements it keeps in mind and says.
#pragma once

#include "naivebayes/parts/NBPartCounts.h"
#include "naivebayes/parts/NBPartSums.h"

class INBParts {
 public:
  virtual ~INBParts() = default;
  // What all parts count, of candidates, too. The parts keep their codes.
  [[nodiscard]] virtual bool Count(NBPartCounts& counts) = 0;
  // The sums of all parts' codes.
  [[nodiscard]] virtual bool Ask(const NBPartQuestion& question, NBPartSums& sums) = 0;
};
