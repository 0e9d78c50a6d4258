// Random cases of every kind for the laws of the engine, and all that a component tells of them.
#pragma once

#include <cmath>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "tests/feature/Tables.h"

// Everything that queries tell, as doubles; last the four numbers of cases, and three numbers for
// each target category.
inline std::vector<double> ReportOf(const IFSAlgorithm& component) {
  std::vector<double> report;
  const auto add = [&report](const auto& list) {
    report.insert(report.end(), list.begin(), list.end());
  };
  for (int c = 0; c < MCFSCommon::kNCriteria; ++c) {
    const auto criterion = static_cast<MCFSCommon::RankCriteria>(c);
    add(component.GetRanks(criterion));
    add(component.GetCriterionValues(criterion));
    std::vector<int> indices;
    std::vector<double> values;
    const auto status = component.GetTopPredictors(criterion, indices, values, 0);
    report.push_back(static_cast<double>(status.GetErrorCode()));
    add(indices);
    add(values);
    for (int j = 0; j < component.GetSettings()->GetNPredictors(); ++j) {
      std::vector<double> out(4);
      component.GetPredictorStats(c, j, out[0], out[1], out[2], out[3]);
      add(out);
    }
  }
  add(component.GetIndicesDelPred());
  add(component.GetReasonsDelPred());
  report.push_back(component.IsDataAccumulated() ? 1.0 : 0.0);
  report.push_back(component.ArePredictorsRanked() ? 1.0 : 0.0);
  double weights[2];
  int cases[2];
  component.GetNValidNExcluded(weights[0], weights[1], cases[0], cases[1]);
  report.insert(report.end(), {weights[0], weights[1], 1.0 * cases[0], 1.0 * cases[1]});
  for (int k = 0; k < component.GetNTargetCategories(); ++k) {
    int category = 0;
    std::pair<int, double> counts;
    component.GetTargetCategoryInfo(k, category, counts);
    report.insert(report.end(), {1.0 * category, 1.0 * counts.first, counts.second});
  }
  return report;
}

inline bool SameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

// Columns: target, weight, then 4 predictors (2 categorical, 2 continuous) with holes.
inline Table RandomTable(std::size_t n, bool catTarget, unsigned seed) {
  std::mt19937 random(seed);
  const auto draw = [&random](double to) {
    return std::uniform_real_distribution<double>(0.0, to)(random);
  };
  Table table(6);
  for (std::size_t i = 0; i < n; ++i) {
    const double y = catTarget ? std::floor(draw(4.0)) : 1e3 + draw(50.0);
    table[0].push_back(draw(1.0) < 0.05 ? (catTarget ? -1.0 : KOVA_SystemMissing) : y);
    table[1].push_back(draw(1.0) < 0.1 ? (draw(1.0) < 0.5 ? KOVA_SystemMissing : -2.0) : draw(3.0));
    table[2].push_back(std::floor(draw(5.0)) + (draw(1.0) < 0.5 ? 0.9 : 0.0));
    table[3].push_back(draw(1.0) < 0.2 ? -1.0 : std::floor(draw(300.0)) - 20.0);  // many categories
    table[4].push_back(draw(1.0) < 0.1 ? KOVA_SystemMissing : y + draw(30.0));
    table[5].push_back(draw(1e6));
  }
  return table;
}

inline FSSettings SettingsFor(bool catTarget) {
  FSSettings settings({true, true, false, false}, catTarget);
  settings.SetWeightPosition(1);
  settings.SetWeightToFreq(MCFSCommon::kAsIs);
  return settings;
}
