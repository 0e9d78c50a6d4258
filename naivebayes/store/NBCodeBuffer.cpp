#include "naivebayes/store/NBCodeBuffer.h"

void NBCodeBuffer::Resize(std::size_t inputs, std::size_t cases) {
  fvTargets.resize(cases);
  fvWeights.assign(cases, 1.0);
  fvCodes.resize(inputs);
  for (auto& column : fvCodes) column.resize(cases);
}

const NBCodeBlock& NBCodeBuffer::View() {
  fBlock.Reset(fvTargets.size(), fvTargets.data(), fvWeights.data(), fvCodes.size());
  for (std::size_t j = 0; j < fvCodes.size(); ++j) fBlock.SetCodes(j, fvCodes[j].data());
  return fBlock;
}
