// The weights of a sample's records by category of the target and, for each input of the model, of
// input and target.
#pragma once

#include <vector>

#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBayesInputBase.h"
#include "naivebayes/store/NBCodeBlock.h"

class NBSampleCounts {
 public:
  explicit NBSampleCounts(const NBModelView& model);

  void Add(const NBCodeBlock& codes);

  const std::vector<double>& GetTargets() const { return fvTargets; }
  const NBayesInputBase& GetInput(std::size_t input) const { return fvInputs[input]; }

 private:
  std::vector<double> fvTargets;
  std::vector<NBayesInputBase> fvInputs;
};
