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

}  // namespace

std::unique_ptr<INBAlgorithm> NBFactory::RestoreFromCounts(const NBVarList& variables,
                                                           const NBModelCounts& counts) {
  fStatus = MCNaive::Error(MCNaive::kNotRestored);
  if (variables.GetTargetIndex() < 0 || counts.fNRecords < 2 || !AreWeights(counts.fTarget)) {
    return nullptr;
  }
  auto component = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), variables);
  component->fNRecords = counts.fNRecords;
  component->fTotalWeight = counts.fWeight;
  if (!(counts.fWeight > 0) || !component->HasFiniteWeight()) return nullptr;
  const auto classes = static_cast<int>(counts.fTarget.size());
  std::vector<std::int32_t> codes(counts.fTarget.size());
  std::iota(codes.begin(), codes.end(), 0);
  component->fOutput.Setup(classes);
  component->fOutput.AddCases(codes.data(), counts.fTarget.data(), codes.size());
  component->fOutput.ComputeProbabilities(counts.fWeight);
  component->fInputs.clear();
  for (int place = 0; place < component->fVarList.Size(); ++place) {
    if (component->fVarList.GetVariableRole(place) != INBVariable::kInput) continue;
    NBayesInput input(place, component->fVarList.GetVarAt(place), classes);
    const std::vector<double>& table = counts.fInputs[component->fInputs.size()];
    if (!AreWeights(table)) return nullptr;
    for (std::size_t cell = 0; cell < table.size(); ++cell) {
      input.AddCount(static_cast<int>(cell) / classes, static_cast<int>(cell) % classes,
                     table[cell]);
    }
    input.ComputeProbabilities(counts.fWeight);
    component->fInputs.push_back(std::move(input));
  }
  component->fNInputs = static_cast<int>(component->fInputs.size());
  if (!component->LinkParts()) return nullptr;
  fStatus = {};
  return component;
}
