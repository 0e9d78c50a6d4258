// A component made of counts that were kept elsewhere than in its saved state.
#include "naivebayes/NBModelCounts.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBFactory.h"

namespace {

bool AreWeights(const std::vector<double>& counts) {
  return std::ranges::all_of(counts, [](double count) { return count >= 0; });
}

void Fill(NBayesOutput& output, const NBModelCounts& counts) {
  std::vector<std::int32_t> codes(counts.fTarget.size());
  std::iota(codes.begin(), codes.end(), 0);
  output.Setup(static_cast<int>(codes.size()));
  output.AddCases(codes.data(), counts.fTarget.data(), codes.size());
  output.ComputeProbabilities(counts.fWeight);
}

NBayesInput InputOf(NBVarList& variables, int place, int classes, const std::vector<double>& table,
                    double weight) {
  NBayesInput input(place, variables.GetVarAt(place), classes);
  input.AddCounts(table);
  input.ComputeProbabilities(weight);
  return input;
}

}  // namespace

std::unique_ptr<INBAlgorithm> NBFactory::RestoreFromCounts(const NBVarList& variables,
                                                           const NBModelCounts& counts) {
  fStatus = MCNaive::Error(MCNaive::kNotRestored);
  const bool isCounted = counts.fNRecords >= 2 && counts.fWeight > 0 &&
                         AreWeights(counts.fTarget) &&
                         std::ranges::all_of(counts.fInputs, AreWeights);
  if (!isCounted || variables.GetTargetIndex() < 0) return nullptr;
  auto component = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), variables);
  NBVarList& list = component->fVarList;
  component->fNRecords = counts.fNRecords;
  component->fTotalWeight = counts.fWeight;
  if (!component->HasFiniteWeight()) return nullptr;
  Fill(component->fOutput, counts);
  component->fInputs.clear();
  for (int place = 0; place < list.Size(); ++place) {
    if (list.GetVariableRole(place) != INBVariable::kInput) continue;
    const std::vector<double>& table = counts.fInputs[component->fInputs.size()];
    component->fInputs.push_back(
        InputOf(list, place, component->fOutput.GetNCategories(), table, counts.fWeight));
  }
  component->fNInputs = static_cast<int>(component->fInputs.size());
  if (!component->LinkParts()) return nullptr;
  fStatus = {};
  return component;
}
