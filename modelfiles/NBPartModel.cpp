#include "modelfiles/NBPartModel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>
#include <numeric>
#include <utility>

#include "common/state/StateFields.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/parts/NBCountsAlone.h"

std::string NBPartModel::Add(const NBPartModel& other) {
  int differing = -1;
  if (!fVarList.CanMergeWith(other.fVarList, differing)) {
    if (differing < 0) return "the number of variables is another";
    return "variable " + fVarList.GetVarAt(differing)->GetVariableName() +
           " has another kind, role or other bins";
  }
  if (fRanges != other.fRanges) return "it was counted with other ranges";
  if (!fCounts.HasShapeOf(other.fCounts)) return "its tables have other categories";
  std::vector<std::int64_t> parts;
  std::ranges::set_intersection(fParts, other.fParts, std::back_inserter(parts));
  if (!parts.empty()) return "part " + std::to_string(parts.front()) + " is there already";
  std::ranges::merge(fParts, other.fParts, std::back_inserter(parts));
  fParts = std::move(parts);
  fCounts.Add(other.fCounts);
  return "";
}

std::unique_ptr<INBAlgorithm> NBPartModel::Build() const {
  NaiveBayesSettings settings = fSettings;
  NBVarList variables(fVarList);
  std::unique_ptr<INBAlgorithm> model = NBFactory().CreateNBAlgorithm(settings, variables);
  if (model == nullptr) return nullptr;
  NBCountsAlone counts(fCounts);
  const bool isBuilt = !model->BuildModelInParts(counts).IsError() && model->IsModelBuilt();
  return isBuilt ? std::move(model) : nullptr;
}

bool NBPartModel::HasTablesOfVariables() const {
  std::vector<int> categories;
  for (int i = 0; i < fVarList.Size(); ++i) {
    if (fVarList.GetVariableRole(i) != INBVariable::kInput) continue;
    categories.push_back(fVarList.GetVarAt(i)->GetNumberOfCategories());
  }
  const auto isEmpty = [](const std::vector<double>& table) { return table.empty(); };
  const double weight = std::accumulate(fCounts.fTarget.begin(), fCounts.fTarget.end(), 0.0);
  if (std::abs(weight - fCounts.fWeight) > 1e-7 * weight ||
      (weight > 0) != (fCounts.fNRecords > 0)) {
    return false;
  }
  return fVarList.GetTargetIndex() >= 0 && fCounts.fCategories == categories &&
         static_cast<int>(fCounts.fTarget.size()) == fVarList.GetNOutputCats() &&
         std::ranges::none_of(fCounts.fInputs, isEmpty);
}

template <class Archive, class Self>
void NBPartModel::Fields(Archive& archive, Self& self) {
  archive.Long(self.fRanges);
  archive.Size(self.fParts, 8);
  for (auto& part : self.fParts) archive.Long(part);
  archive.Check(std::ranges::adjacent_find(self.fParts, std::ranges::greater_equal()) ==
                self.fParts.end());
  archive.Object(self.fSettings);
  archive.Object(self.fVarList);
  archive.Object(self.fCounts);
  archive.Check(self.HasTablesOfVariables());
}

MC_STATE_OPERATIONS(NBPartModel, "NBPartModel 1.00", "NBPartModel 1.00")
