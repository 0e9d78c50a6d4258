#include "feature/ranking/FSPredictorSet.h"

#include <algorithm>
#include <ostream>

#include "common/MissingValue.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSCatAccum.h"
#include "feature/accumulators/FSCatPCatTAccum.h"
#include "feature/accumulators/FSCatPContTAccum.h"
#include "feature/accumulators/FSContAccum.h"
#include "feature/accumulators/FSContPCatTAccum.h"
#include "feature/accumulators/FSContPContTAccum.h"
#include "feature/accumulators/FSDisplay.h"
#include "feature/ranking/FSStopwatch.h"

using namespace MCFSCommon;
using MCFeature::MCStatus;

namespace {

// The reason of the first stage, 0 for none.
int AllMissingOrConstant(const IFSPredTargetAccum& accumulator) {
  if (accumulator.IsAllMissing()) return kAllMissing;
  return accumulator.IsAllConstant() ? kAllConstant : kNotDeleted;
}

}  // namespace

FSPredictorSet::FSPredictorSet(FSSettings* settings, FSCancelInfo* cancel)
    : fpSettings(settings),
      fpCancel(cancel),
      fNPredictors(settings->GetNPredictors()),
      fSetType(settings->GetTypeAllPredictors()) {}

FSPredictorSet::~FSPredictorSet() = default;

std::unique_ptr<IFSPredTargetAccum> FSPredictorSet::NewAccumulator(int predictor) const {
  const bool catTarget = fpSettings->IsCatTarget();
  if (fpSettings->IsCatPredictor(predictor)) {
    if (!fbWithTarget) return std::make_unique<FSCatAccum>();
    if (catTarget) return std::make_unique<FSCatPCatTAccum>();
    return std::make_unique<FSCatPContTAccum>();
  }
  if (!fbWithTarget) return std::make_unique<FSContAccum>();
  if (catTarget) return std::make_unique<FSContPCatTAccum>();
  return std::make_unique<FSContPContTAccum>();
}

void FSPredictorSet::AllocAccum(bool withTarget) {
  if (!fAccumulators.empty()) return;
  fbWithTarget = withTarget;
  for (int j = 0; j < fNPredictors; ++j) fAccumulators.push_back(NewAccumulator(j));
}

void FSPredictorSet::CompletePass() {
  if (fbPassCompleted) return;
  const FSStopwatch watch(fElapsed);
  if (fSetType != kAllCategorical || !fpSettings->IsCatTarget()) {
    for (const auto& accumulator : fAccumulators) {
      if (accumulator) accumulator->ComputeVariances();
    }
  }
  fbPassCompleted = true;
}

// Deletes every predictor for which reason(accumulator) is not 0, until cancelled.
template <class Reason>
void FSPredictorSet::RemoveWhere(Reason reason) {
  CompletePass();
  const FSStopwatch watch(fElapsed);
  std::vector<std::pair<int, int>> found;
  for (std::size_t j = 0; j < fAccumulators.size() && !fpCancel->IsCancel(); ++j) {
    if (!fAccumulators[j]) continue;
    const int why = reason(*fAccumulators[j]);
    if (why != kNotDeleted) found.emplace_back(static_cast<int>(j), why);
  }
  Remove(found);
  fStatus = kScreened;
}

void FSPredictorSet::Remove(const std::vector<std::pair<int, int>>& found) {
  std::vector<std::pair<int, int>> all(found);
  for (std::size_t k = 0; k < fDeletedIndices.size(); ++k) {
    all.emplace_back(fDeletedIndices[k], fDeletedReasons[k]);
  }
  std::sort(all.begin(), all.end());
  fDeletedIndices.clear();
  fDeletedReasons.clear();
  for (const auto& [index, reason] : all) {
    fAccumulators[static_cast<std::size_t>(index)].reset();
    fDeletedIndices.push_back(index);
    fDeletedReasons.push_back(reason);
  }
}

MCStatus FSPredictorSet::CheckPredAllMissConst() {
  RemoveWhere(AllMissingOrConstant);
  return GetNValidPred() == 0 ? MCFeature::Warning(MCFeature::kAllMissingOrConstant) : MCStatus();
}

MCStatus FSPredictorSet::ScreenPredictors() {
  RemoveWhere([this](const IFSPredTargetAccum& accumulator) {
    return accumulator.CheckDelete(fpSettings);
  });
  return GetNValidPred() == 0 ? MCFeature::Warning(MCFeature::kAllScreenedOut) : MCStatus();
}

MCStatus FSPredictorSet::ScreenAllReasons(std::vector<int>& indices,
                                          std::vector<std::vector<int>>& reasons) {
  CompletePass();
  const FSStopwatch watch(fElapsed);
  for (std::size_t j = 0; j < fAccumulators.size() && !fpCancel->IsCancel(); ++j) {
    if (!fAccumulators[j]) continue;
    std::vector<int> found;
    fAccumulators[j]->CheckAllReasons(fpSettings, found);
    if (const int first = AllMissingOrConstant(*fAccumulators[j]); first != kNotDeleted) {
      found.insert(found.begin(), first);
    }
    if (found.empty()) continue;
    indices.push_back(static_cast<int>(j));
    reasons.push_back(std::move(found));
  }
  fStatus = kScreened;
  const bool none = static_cast<int>(indices.size()) == GetNValidPred();
  return none ? MCFeature::Warning(MCFeature::kAllScreenedOut) : MCStatus();
}

bool FSPredictorSet::GetPredictorStats(int criterion, int predictor, double& value, double& out2,
                                       double& out3, double& out4) const {
  value = out2 = out3 = out4 = MCMV::gMissingValue;
  if (criterion < 0 || criterion >= kNCriteria || predictor < 0 ||
      predictor >= static_cast<int>(fAccumulators.size())) {
    return false;
  }
  const auto& accumulator = fAccumulators[static_cast<std::size_t>(predictor)];
  return accumulator && accumulator->GetOutputStats(criterion, value, out2, out3, out4);
}

void FSPredictorSet::GetNValidNExcluded(double& validWeight, double& excludedWeight,
                                        int& validCases, int& excludedCases) const {
  validWeight = fValidWeight;
  excludedWeight = fExcludedWeight;
  validCases = fNValidCases;
  excludedCases = fNExcludedCases;
}

int FSPredictorSet::GetNTargetCategories() const {
  return static_cast<int>(fTargetCategories.Size());
}

int FSPredictorSet::GetTargetCategoryCount(int position) const {
  int category = 0;
  std::pair<int, double> counts(0, 0.0);
  GetTargetCategoryInfo(position, category, counts);
  return counts.first;
}

bool FSPredictorSet::GetTargetCategoryInfo(int position, int& category,
                                           std::pair<int, double>& counts) const {
  if (position < 0 || position >= GetNTargetCategories()) return false;
  const auto& entry = fTargetCategories[static_cast<std::size_t>(position)];
  category = entry.first;
  counts = entry.second;
  return true;
}

std::string FSPredictorSet::GetScreenCritName(PredictorDelReason reason) {
  return GetDelReasonName(reason);
}

std::string FSPredictorSet::GetRankCritName(RankCriteria criterion) {
  return GetCriterionShortName(criterion);
}

void FSPredictorSet::Cancel() {
  fAccumulators.clear();
  for (auto& sorted : fSortVectors) sorted.clear();
}

void FSPredictorSet::Display(std::ostream& out) const {
  out << "Predictor set: " << fNPredictors << " predictors, " << GetSetTypeName(fSetType) << ", "
      << GetSetStatusName(fStatus) << '\n';
  FSDisplay::Value(out, "Valid weight", fValidWeight);
  FSDisplay::Value(out, "Excluded weight", fExcludedWeight);
  FSDisplay::Value(out, "Valid cases", fNValidCases);
  FSDisplay::Value(out, "Excluded cases", fNExcludedCases);
  FSDisplay::Value(out, "Elapsed seconds", fElapsed);
  FSDisplay::Counts(out, "Target categories", fTargetCategories);
  for (std::size_t k = 0; k < fDeletedIndices.size(); ++k) {
    out << "  Predictor " << fDeletedIndices[k] << " deleted: reason " << fDeletedReasons[k]
        << '\n';
  }
  for (std::size_t j = 0; j < fAccumulators.size(); ++j) {
    if (!fAccumulators[j]) continue;
    out << "Predictor " << j << ": ";
    fAccumulators[j]->Display(out);
  }
}
