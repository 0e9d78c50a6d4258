#include "naivebayes/validation/NBFoldModel.h"

#include <numeric>

#include "naivebayes/encoders/NBBinningEncoder.h"

NBFoldModel::NBFoldModel(const NBModelView& whole, double totalWeight)
    : fOutput(whole.fOutput), fInputs(whole.fInputs), fWeight(totalWeight) {}

void NBFoldModel::TakeOut(const NBCodeBlock& codes, const std::vector<std::size_t>& cases) {
  fTargets.clear();
  fWeights.clear();
  for (const std::size_t i : cases) {
    fTargets.push_back(codes.Targets()[i]);
    fWeights.push_back(-codes.Weights()[i]);
    fWeight -= codes.Weights()[i];
  }
  fOutput.AddCases(fTargets.data(), fWeights.data(), cases.size());
  fCodes.resize(cases.size());
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    const auto gather = [&](const auto* column) {
      for (std::size_t n = 0; n < cases.size(); ++n) fCodes[n] = column[cases[n]];
    };
    std::visit(gather, codes.Codes(static_cast<int>(j)));
    fInputs[j].AddCases(fCodes.data(), fTargets.data(), fWeights.data(), cases.size());
  }
}

// Of weights that are not whole taking out leaves crumbs, where there is nothing.
void NBFoldModel::Finish(const NBModelView& whole) {
  constexpr double kCrumb = 1e-9;
  fOutput.ComputeProbabilities(fWeight);
  for (std::size_t j = 0; j < fInputs.size(); ++j) {
    NBayesInput& input = fInputs[j];
    for (int m = 0; m < input.GetNCategories(); ++m) {
      for (int k = 0; k < input.GetNTargetCategories(); ++k) {
        const double count = input.GetCount(m, k);
        if (count < kCrumb * whole.fInputs[j].GetCount(m, k)) input.AddCount(m, k, -count);
      }
    }
    input.ComputeProbabilities(fWeight);
  }
}

std::vector<std::int32_t> NBFoldModel::BinsOf(std::size_t input) const {
  const NBayesInput& counts = fInputs[input];
  const auto* encoder = dynamic_cast<const NBBinningEncoder*>(counts.GetVariable()->GetEncoder());
  if (encoder == nullptr || counts.GetNNonEmpty() == counts.GetNCategories()) return {};
  const std::int32_t n = counts.GetNCategories();
  std::vector<std::int32_t> bins(static_cast<std::size_t>(n), -1);
  const auto at = [&bins](std::int32_t m) -> std::int32_t& {
    return bins[static_cast<std::size_t>(m)];
  };
  std::int32_t last = -1;
  for (std::int32_t m = 0; m < n; ++m) {
    if (!(counts.GetRowTotal(m) > 0)) continue;
    for (std::int32_t empty = last + 1; empty < m; ++empty) {
      at(empty) = last >= 0 && empty - last <= m - empty ? last : m;
    }
    at(m) = m;
    last = m;
  }
  if (last < 0) return {};
  for (std::int32_t empty = last + 1; empty < n; ++empty) at(empty) = last;
  return bins;
}
