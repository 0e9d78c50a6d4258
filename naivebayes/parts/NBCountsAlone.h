// Counts of parts that are all there is: a model can be built of them, not selected.
#pragma once

#include "naivebayes/parts/INBParts.h"

class NBCountsAlone : public INBParts {
 public:
  // Borrows the counts.
  explicit NBCountsAlone(const NBPartCounts& counts) : fCounts(counts) {}

  bool Count(NBPartCounts& counts) override {
    counts = fCounts;
    return true;
  }
  bool Ask(const NBPartQuestion& /*question*/, NBPartSums& /*sums*/) override { return false; }

 private:
  const NBPartCounts& fCounts;
};
