#include "naivebayes/selection/NBTestCounts.h"

NBTestCounts::NBTestCounts(const NBModelView& model, const std::vector<int>& order)
    : fvOrder(order), fvTargets(model.fOutput.GetNCategories(), 0.0) {
  for (int j : order) {
    fvInputs.emplace_back().Setup(model.fInputs[j].GetNCategories(),
                                  model.fOutput.GetNCategories());
  }
}

void NBTestCounts::Add(const NBCodeBlock& codes) {
  for (std::size_t i = 0; i < codes.Cases(); ++i) {
    fvTargets[codes.Targets()[i]] += codes.Weights()[i];
  }
  for (std::size_t s = 0; s < fvOrder.size(); ++s) {
    fvInputs[s].AddCases(codes.Codes(fvOrder[s]), codes.Targets(), codes.Weights(), codes.Cases());
  }
}

double NBTestCounts::GetWeight() const {
  NBSum sum;
  for (double weight : fvTargets) sum.Add(weight);
  return sum.Total();
}
