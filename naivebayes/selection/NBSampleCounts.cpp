#include "naivebayes/selection/NBSampleCounts.h"

NBSampleCounts::NBSampleCounts(const NBModelView& model)
    : fvTargets(model.fOutput.GetNCategories(), 0.0) {
  for (const NBayesInput& input : model.fInputs) {
    fvInputs.emplace_back().Setup(input.GetNCategories(), input.GetNTargetCategories());
  }
}

void NBSampleCounts::Add(const NBCodeBlock& codes) {
  for (std::size_t i = 0; i < codes.Cases(); ++i) {
    fvTargets[codes.Targets()[i]] += codes.Weights()[i];
  }
  for (std::size_t j = 0; j < fvInputs.size(); ++j) {
    fvInputs[j].AddCases(codes.Codes(static_cast<int>(j)), codes.Targets(), codes.Weights(),
                         codes.Cases());
  }
}
