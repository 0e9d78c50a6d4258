#include "naivebayes/model/NBayesOutput.h"

#include <algorithm>
#include <cstdint>
#include <ostream>

#include "naivebayes/variables/NBCodeMap.h"

void NBayesOutput::Setup(int targetCategories) {
  fvCounts.assign(targetCategories, 0.0);
  fvPriors.assign(targetCategories, 0.0);
  fvRecords.assign(targetCategories, 0);
}

int NBayesOutput::ComputeProbabilities(double totalWeight) {
  const auto nonEmpty = static_cast<int>(
      std::count_if(fvCounts.begin(), fvCounts.end(), [](double count) { return count > 0; }));
  const double alpha = 1.0 / totalWeight;
  for (std::size_t k = 0; k < fvCounts.size(); ++k) {
    fvPriors[k] = (fvCounts[k] + alpha) / (totalWeight + nonEmpty / totalWeight);
  }
  return nonEmpty;
}

void NBayesOutput::ResetCounts() {
  std::fill(fvCounts.begin(), fvCounts.end(), 0.0);
  fvRecords.assign(fvCounts.size(), 0);
}

void NBayesOutput::AddCases(const std::int32_t* targets, const double* weights, std::size_t cases) {
  for (std::size_t i = 0; i < cases; ++i) fvCounts[targets[i]] += weights[i];
  if (fvRecords.empty()) return;
  for (std::size_t i = 0; i < cases; ++i) ++fvRecords[targets[i]];
}

void NBayesOutput::AddCounts(const std::vector<double>& weights,
                             const std::vector<std::int64_t>& records) {
  for (std::size_t k = 0; k < fvCounts.size(); ++k) {
    fvCounts[k] += weights[k];
    if (fvRecords.empty()) continue;
    fvRecords[k] +=
        static_cast<std::int32_t>(std::min<std::int64_t>(records[k], INT32_MAX - fvRecords[k]));
  }
}

void NBayesOutput::MergeRecords(const NBayesOutput& other, const std::vector<int>& map) {
  if (other.fvRecords.empty()) fvRecords.clear();
  if (fvRecords.empty()) return;
  fvRecords.resize(fvCounts.size(), 0);
  for (std::size_t k = 0; k < map.size(); ++k) fvRecords[map[k]] += other.fvRecords[k];
}

std::vector<int> NBayesOutput::MergeTargetCounts(const NBayesOutput& other) {
  std::vector<int> map = MakeCodeMap(*other.fpVariable, other.GetNCategories(), *fpVariable);
  const auto needed = static_cast<std::size_t>(fpVariable->GetNumberOfCategories());
  if (fvCounts.size() < needed) {
    fvCounts.resize(needed, 0.0);
    fvPriors.resize(needed, 0.0);
  }
  for (std::size_t k = 0; k < map.size(); ++k) fvCounts[map[k]] += other.fvCounts[k];
  MergeRecords(other, map);
  return map;
}

void NBayesOutput::Display(std::ostream& os) const {
  os << "Target categories " << fvCounts.size() << '\n';
  for (std::size_t k = 0; k < fvCounts.size(); ++k) {
    os << k << ": " << fvCounts[k] << " (" << fvPriors[k] << ")\n";
  }
}
