#include "feature/ranking/FSRanking.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/pass/FSCounts.h"

using namespace MCFSCommon;

namespace {

std::size_t At(int index) { return static_cast<std::size_t>(index); }

bool IsExact(const FSCriterion& criterion, const FSSettings& settings) {
  return settings.ArePValuesExact() && criterion.HasSignificance();
}

FSPredSort SortOf(const FSScore& score, int predictor, bool exact) {
  if (!exact) return {score.fValue, score.fTie1, score.fTie2, predictor};
  return {score.fTest.P(), score.fTest.LogP(), std::fabs(score.fTest.fStatistic), predictor};
}

auto Before(const FSCriterion& criterion, const FSSettings& settings) {
  constexpr FSOrder kByLogP = {FSDirection::kIgnored, FSDirection::kSmallerFirst,
                               FSDirection::kLargerFirst};
  const FSOrder& order = IsExact(criterion, settings) ? kByLogP : criterion.fOrder;
  return [by = order](const FSPredSort& a, const FSPredSort& b) {
    return FSPredSort::ComesFirst(a, b, by);
  };
}

}  // namespace

FSRanking::FSRanking(const FSSettings* settings, FSCancelInfo* cancel)
    : fpSettings(settings), fpCancel(cancel) {}

void FSRanking::Start(int nPredictors) {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    const std::size_t n = fpSettings->GetCriterion(criterion.fCode) ? At(nPredictors) : 0;
    fOrders[criterion.fCode].clear();
    fValues[criterion.fCode].assign(n, MCMV::gMissingValue);
    fRanks[criterion.fCode].assign(n, -1);
  }
}

void FSRanking::Enter(int predictor, const FSCounts& counts) {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!fpSettings->GetCriterion(criterion.fCode)) continue;
    const FSScore& score = counts.ScoreOf(At(predictor), criterion.fCode);
    const FSPredSort sort = SortOf(score, predictor, IsExact(criterion, *fpSettings));
    fOrders[criterion.fCode].push_back(sort);
    fValues[criterion.fCode][At(predictor)] = sort.fValue;
  }
}

void FSRanking::SortAll() {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (fpCancel->IsCancel()) return;
    std::vector<FSPredSort>& order = fOrders[criterion.fCode];
    std::stable_sort(order.begin(), order.end(), Before(criterion, *fpSettings));
  }
}

void FSRanking::SortBest(int n) {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (fpCancel->IsCancel()) break;
    if (!fpSettings->GetCriterion(criterion.fCode)) continue;
    std::vector<FSPredSort>& order = fOrders[criterion.fCode];
    n = std::min(n, static_cast<int>(order.size()));
    std::partial_sort(order.begin(), order.begin() + n, order.end(),
                      Before(criterion, *fpSettings));
  }
  fNBest = n;
}

void FSRanking::RankFirst(int n) {
  for (std::size_t c = 0; c < fOrders.size() && !fpCancel->IsCancel(); ++c) {
    const int count = std::min(n, static_cast<int>(fOrders[c].size()));
    for (int p = 0; p < count; ++p) fRanks[c][At(fOrders[c][At(p)].fIndex)] = p;
  }
}

void FSRanking::Clear() {
  for (auto& order : fOrders) order.clear();
}

const std::vector<FSPredSort>& FSRanking::OrderOf(RankCriteria criterion,
                                                  PredictorSetType set) const {
  const bool byF = criterion == kTStat && set == kMixed;
  return fOrders[At(byF ? kFStat : criterion)];
}

const std::vector<double>& FSRanking::GetValues(RankCriteria criterion) const {
  static const std::vector<double> kNone;
  return At(criterion) < fValues.size() ? fValues[At(criterion)] : kNone;
}

const std::vector<int>& FSRanking::GetRanks(RankCriteria criterion) const {
  static const std::vector<int> kNone;
  return At(criterion) < fRanks.size() ? fRanks[At(criterion)] : kNone;
}

int FSRanking::RankOf(RankCriteria criterion, int predictor) const {
  const std::vector<int>& ranks = GetRanks(criterion);
  return ranks.empty() ? -1 : ranks[At(predictor)];
}

void FSRanking::Display(std::ostream& out) const {
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (fOrders[criterion.fCode].empty()) continue;
    out << "Order by " << criterion.fName << '\n';
    for (const FSPredSort& sort : fOrders[criterion.fCode]) sort.Display(out);
  }
}
