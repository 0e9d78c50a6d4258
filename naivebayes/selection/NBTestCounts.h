// What the test criterion needs beside the D terms: the test weights by category of the target and,
// for each input in order of entry, of input and target.
#pragma once

#include <vector>

#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/model/NBayesInputBase.h"
#include "naivebayes/store/NBCodeBlock.h"

class NBTestCounts {
 public:
  // For these inputs of the model.
  NBTestCounts(const NBModelView& model, const std::vector<int>& order);

  void Add(const NBCodeBlock& codes);

  double GetWeight() const;
  const std::vector<double>& GetTargets() const { return fvTargets; }
  const NBayesInputBase& GetInput(std::size_t place) const { return fvInputs[place]; }

 private:
  const std::vector<int>& fvOrder;
  std::vector<double> fvTargets;
  std::vector<NBayesInputBase> fvInputs;
};
