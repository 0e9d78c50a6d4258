// Room for a block of codes that is being made: encoded, read back or drawn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "naivebayes/store/NBCodeBlock.h"

struct NBCodeBuffer {
  std::vector<std::int32_t> fvTargets;
  std::vector<double> fvWeights;
  std::vector<std::vector<std::int32_t>> fvCodes;  // by input

  // So many cases of weight 1, with targets and codes still to be set.
  void Resize(std::size_t inputs, std::size_t cases);

  // The block that the columns make, until they are changed. REQUIRES: all are equally long.
  const NBCodeBlock& View();

 private:
  NBCodeBlock fBlock;
};
