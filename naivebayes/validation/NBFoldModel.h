// The tables of a model of all cases but those of a fold: the counts of all less those of the fold.
// The encoders stay those of the model of all cases.
#pragma once

#include <cstdint>
#include <vector>

#include "naivebayes/model/NBModelView.h"
#include "naivebayes/store/NBCodeBlock.h"

class NBFoldModel {
 public:
  // Everything is still to be taken out. `totalWeight` is that of all cases.
  NBFoldModel(const NBModelView& whole, double totalWeight);

  // Takes the cases of a block that are of this fold out of the counts.
  void TakeOut(const NBCodeBlock& codes, const std::vector<std::size_t>& cases);
  // To be called after the last: estimates from the counts that are left.
  void Finish(const NBModelView& whole);

  NBModelView View() const { return {fOutput, fInputs}; }
  double GetWeight() const { return fWeight; }
  // Whether the input has two categories left, without which a model does not take it.
  bool IsUsable(std::size_t input) const { return fInputs[input].GetNNonEmpty() >= 2; }

  // For each bin of a binned input the bin that takes its values: itself, or where no case is left
  // the nearest that has some, the lower of two. Empty for other inputs, and where there is nothing
  // to change.
  std::vector<std::int32_t> BinsOf(std::size_t input) const;

 private:
  NBayesOutput fOutput;
  std::vector<NBayesInput> fInputs;
  double fWeight;
  std::vector<std::int32_t> fTargets;  // room for the cases of a block
  std::vector<double> fWeights;
  std::vector<std::int32_t> fCodes;
};
