// Merging: components that saw parts of the data, put together in any order, are the component that
// saw all of it; what does not fit is refused and changes nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSCategoryMaps.h"
#include "tests/feature/RandomRuns.h"

namespace {

using MCFeature::MCStatus;

std::unique_ptr<IFSAlgorithm> NewComponent(FSSettings& settings) {
  FSFactory factory;
  return factory.CreateFSAlgorithm(&settings);
}

std::unique_ptr<IFSAlgorithm> Part(FSSettings& settings, const Table& table) {
  auto component = NewComponent(settings);
  BlocksOf source(table, 64);
  static_cast<void>(component->Accumulate(source, -1));
  return component;
}

std::unique_ptr<IFSAlgorithm> Accumulated(FSSettings& settings, const Table& table) {
  auto component = Part(settings, table);
  const MCStatus status = component->GetStatus();
  EXPECT_TRUE(status.IsOK() || status.GetErrorCode() == 80009) << status.GetErrorCode();
  return component;
}

// The cases of a table, dealt at random; a part may get none.
std::vector<Table> Deal(const Table& table, std::size_t parts, std::mt19937& random) {
  std::vector<Table> dealt(parts, Table(table.size()));
  for (std::size_t i = 0; i < table[0].size(); ++i) {
    Table& part = dealt[random() % parts];
    for (std::size_t j = 0; j < table.size(); ++j) part[j].push_back(table[j][i]);
  }
  return dealt;
}

// Numbers a column's categories by first appearance, as an adapter does; the map leads back.
std::vector<int> Renumber(std::vector<double>& column) {
  std::map<int, int> codes;
  std::vector<int> back;
  for (double& value : column) {
    if (MCMV::IsMissing(value) || static_cast<int>(value) == -1) continue;
    const auto [at, isNew] =
        codes.try_emplace(static_cast<int>(value), static_cast<int>(codes.size()));
    if (isNew) back.push_back(at->first);
    value = at->second;
  }
  return back;
}

FSCategoryMaps RenumberAll(Table& table, const FSSettings& settings) {
  FSCategoryMaps maps;
  if (settings.IsCatTarget()) maps.fTarget = Renumber(table[0]);
  for (int j = 0; j < settings.GetNPredictors(); ++j) {
    auto& map = maps.fPredictors.emplace_back();
    if (settings.IsCatPredictor(j)) map = Renumber(table[static_cast<std::size_t>(j) + 2]);
  }
  return maps;
}

void ExpectNear(const std::vector<double>& x, const std::vector<double>& y) {
  ASSERT_EQ(x.size(), y.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    EXPECT_NEAR(x[i], y[i], 1e-12 * std::max(1.0, std::abs(x[i]))) << i;
  }
}

class Merged : public testing::TestWithParam<std::tuple<bool, bool, MCFSCommon::WeightToFreq>> {};

TEST_P(Merged, PartsInAnyOrderAreTheWhole) {
  const auto [catTarget, renumbered, rounding] = GetParam();
  FSSettings settings = SettingsFor(catTarget);
  settings.SetWeightToFreq(rounding);
  for (unsigned seed = 1; seed <= 8; ++seed) {
    std::mt19937 random(seed);
    Table table = RandomTable(300, catTarget, seed);
    // The second predictor is constant in its first cases, the third missing in its last.
    std::fill_n(table[3].begin(), 120, 7.0);
    std::fill(table[4].end() - 150, table[4].end(), KOVA_SystemMissing);
    const auto whole = Accumulated(settings, table);
    std::vector<Table> parts = Deal(table, seed, random);
    const auto merged = NewComponent(settings);
    for (Table& part : parts) {
      const FSCategoryMaps maps = renumbered ? RenumberAll(part, settings) : FSCategoryMaps();
      const auto component = Accumulated(settings, part);
      EXPECT_TRUE(merged->Merge(*component, renumbered ? &maps : nullptr).IsOK());
    }
    for (IFSAlgorithm* component : {whole.get(), merged.get()}) {
      EXPECT_TRUE(component->CheckPredAllMissConst().IsOK());
      EXPECT_TRUE(component->ScreenPredictors().IsOK());
      EXPECT_TRUE(component->SortAndRank(0).IsOK());
    }
    ExpectNear(ReportOf(*merged), ReportOf(*whole));
    if (rounding == MCFSCommon::kAsIs) continue;
    std::vector<double> a = ReportOf(*merged), b = ReportOf(*whole);  // counts are whole numbers
    const std::size_t tail = 4 + 3 * static_cast<std::size_t>(whole->GetNTargetCategories());
    EXPECT_TRUE(std::equal(a.end() - static_cast<std::ptrdiff_t>(tail), a.end(),
                           b.end() - static_cast<std::ptrdiff_t>(tail)));
  }
}

INSTANTIATE_TEST_SUITE_P(Merging, Merged,
                         testing::Combine(testing::Bool(), testing::Bool(),
                                          testing::Values(MCFSCommon::kAsIs, MCFSCommon::kRound)));

TEST(Merging, HoldsWithoutATargetForConstantsAndForNothing) {
  // Predictors: constant within each part but not together, constant everywhere, never there.
  FSSettings settings({true, false, false, true}, true);
  settings.SetTargetPosition(-1);
  const double none = KOVA_SystemMissing;
  const Table first = {{1, 1}, {2.5, 2.5}, {9, 9}, {none, none}};
  const Table second = {{2, 2}, {3.5, 3.5}, {9, 9}, {none, -1}};
  const auto merged = Accumulated(settings, first);
  EXPECT_TRUE(merged->Merge(*Accumulated(settings, second), nullptr).IsOK());
  EXPECT_TRUE(merged->CheckPredAllMissConst().IsOK());
  EXPECT_EQ(merged->GetIndicesDelPred(), (std::vector<int>{2, 3}));
  EXPECT_EQ(merged->GetReasonsDelPred(), (std::vector<int>{2, 1}));
}

TEST(Merging, WithoutATargetCategoriesOfAllPartsAreScreened) {
  FSSettings settings(1, true, true);
  settings.SetTargetPosition(-1);
  settings.SetDeleteManySingle(true);
  const auto merged = Accumulated(settings, {{1, 1, 1, 1}});
  EXPECT_TRUE(merged->Merge(*Accumulated(settings, {{2, 2, 3, 3}}), nullptr).IsOK());
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  EXPECT_TRUE(merged->ScreenWithoutTarget(indices, reasons).IsOK());
  EXPECT_TRUE(indices.empty()) << "only half of the cases have category 1";
}

// 1 + 2 + 4 + ... cases make the largest int.
TEST(Merging, CountsCasesUpToTheLargestInt) {
  FSSettings settings(1, true, true);
  auto part = Accumulated(settings, {{0}, {1}});
  const auto all = NewComponent(settings);
  for (int i = 0; i < 31; ++i) {
    ASSERT_TRUE(all->Merge(*part, nullptr).IsOK()) << i;
    auto twice = NewComponent(settings);
    for (int k = 0; k < 2 && i < 30; ++k) {
      EXPECT_TRUE(twice->Merge(*part, nullptr).IsOK());
    }
    part = std::move(twice);
  }
  double weights[2];
  int valid = 0, excluded = 0;
  all->GetNValidNExcluded(weights[0], weights[1], valid, excluded);
  EXPECT_EQ(valid, std::numeric_limits<int>::max());
  const auto one = Accumulated(settings, {{0}, {1}});
  EXPECT_TRUE(all->Merge(*one, nullptr).IsError());
}

TEST(Merging, APartWithoutAValidCaseCountsItsExcludedCases) {
  FSSettings settings(1, true, true);
  const auto component = Accumulated(settings, {{0, 1, 1}, {0, 1, 0}});
  const auto excluded = Accumulated(settings, {{KOVA_SystemMissing, 1}, {0, KOVA_SystemMissing}});
  ASSERT_EQ(excluded->GetStatus().GetErrorCode(), 80009);
  EXPECT_TRUE(component->Merge(*excluded, nullptr).IsOK());
  double weights[2];
  int cases[2];
  component->GetNValidNExcluded(weights[0], weights[1], cases[0], cases[1]);
  EXPECT_EQ(cases[0], 3);
  EXPECT_EQ(cases[1], 2);
  EXPECT_EQ(weights[1], 2.0);
}

// As one pass would: an error for as long as no case is valid, whatever the order of the parts.
TEST(Merging, PartsWithoutAValidCaseMayComeFirst) {
  const double none = KOVA_SystemMissing;
  FSSettings settings(1, true, true);
  settings.SetWeightPosition(1);
  const Table valid = {{0, 1, 1}, {1, 2, 1}, {0, 1, 0}};
  const Table excluded = {{none, 1}, {1, 3}, {0, none}};
  const Table weightless = {{0, 1}, {0, none}, {0, 1}};
  const auto merge = [&](IFSAlgorithm& into, const Table& table) {
    return into.Merge(*Part(settings, table), nullptr).GetErrorCode();
  };
  const auto merged = NewComponent(settings), plain = NewComponent(settings);
  EXPECT_EQ(merge(*merged, weightless), 80013);
  EXPECT_EQ(merge(*merged, weightless), 80013);
  EXPECT_EQ(merge(*merged, excluded), 80009);
  FSSettings others = settings;
  others.SetMaxPctMiss(50.0);
  EXPECT_EQ(merged->Merge(*Part(others, valid), nullptr).GetErrorCode(), 80014);
  EXPECT_EQ(merged->GetStatus().GetErrorCode(), 80009);
  EXPECT_EQ(merge(*merged, valid), 0);
  EXPECT_EQ(merge(*merged, excluded), 0);
  for (const Table* part : {&valid, &excluded, &excluded, &weightless}) merge(*plain, *part);
  for (IFSAlgorithm* component : {merged.get(), plain.get()}) {
    EXPECT_TRUE(component->SortAndRank(0).IsOK());
  }
  EXPECT_EQ(ReportOf(*merged), ReportOf(*plain));
}

struct Refusal {
  void (*fChange)(FSSettings&);
  std::int64_t fObstacle;
  std::int64_t fPredictor;
};

TEST(Merging, OtherSettingsAreRefusedByName) {
  using S = FSSettings;
  const Refusal refusals[] = {
      {[](S& s) { s.AddPredictor(true); }, MCFeature::kNPredictors, 0},
      {[](S& s) { s.SetPredictorType(1, false); }, MCFeature::kPredictorType, 1},
      {[](S& s) { s.SetTargetType(false); }, MCFeature::kTargetType, 0},
      {[](S& s) { s.SetFlagTrInput(true); }, MCFeature::kTransactional, 0},
      {[](S& s) { s.SetTargetPosition(1); }, MCFeature::kTargetColumn, 0},
      {[](S& s) { s.SetCaseIDPosition(5); }, MCFeature::kCaseIDColumn, 0},
      {[](S& s) { s.SetWeightPosition(1); }, MCFeature::kWeightColumn, 0},
      {[](S& s) { s.SetWeightToFreq(MCFSCommon::kTruncate); }, MCFeature::kWeightRounding, 0},
      {[](S& s) { s.SetCriterion(MCFSCommon::kLambda, false); }, MCFeature::kCriteria, 0},
      {[](S& s) { s.SetExactPValues(true); }, MCFeature::kCriteria, 0},
      {[](S& s) { s.SetMaxPctMiss(71.0); }, MCFeature::kScreeningRules, 0},
      {[](S& s) { s.SetDeleteSmallStddev(false); }, MCFeature::kScreeningRules, 0},
  };
  const Table table = {{0, 1, 0, 1}, {0, 1, 0, 1}, {0, 1, 1, 0}, {1, 1, 0, 0}};
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.fObstacle);
    FSSettings settings(3, true, true);
    FSSettings others = settings;
    refusal.fChange(others);
    const auto component = Accumulated(settings, table);
    const auto other = NewComponent(others);
    BlocksOf source(table, 2);
    EXPECT_TRUE(other->Accumulate(source, -1).IsOK());
    const std::vector<double> before = ReportOf(*component);
    const MCStatus status = component->Merge(*other, nullptr);
    EXPECT_EQ(status,
              MCFeature::CannotMerge(static_cast<MCFeature::MergeObstacle>(refusal.fObstacle),
                                     refusal.fPredictor));
    EXPECT_TRUE(component->GetStatus().IsOK());
    EXPECT_EQ(ReportOf(*component), before);
    EXPECT_TRUE(component->SortAndRank(0).IsOK());
  }
}

TEST(Merging, OnlyDataPassesAreMerged) {
  FSSettings settings(1, true, true);
  const Table table = {{0, 1, 0, 1}, {0, 1, 0, 1}};
  const auto stage = MCFeature::CannotMerge(MCFeature::kStage);
  const auto component = Accumulated(settings, table);
  const auto screened = Accumulated(settings, table);
  EXPECT_TRUE(screened->CheckPredAllMissConst().IsOK());
  EXPECT_EQ(component->Merge(*screened, nullptr), stage);
  EXPECT_EQ(screened->Merge(*component, nullptr), stage);
  EXPECT_EQ(component->Merge(*NewComponent(settings), nullptr), stage);
  EXPECT_EQ(component->Merge(*component, nullptr), MCFeature::CannotMerge(MCFeature::kOwnSelf));
  const auto failed = Accumulated(settings, table);
  EXPECT_TRUE(failed->SortAndRank(9).IsError());
  EXPECT_EQ(component->Merge(*failed, nullptr), stage);
  EXPECT_EQ(failed->Merge(*component, nullptr).GetErrorCode(), 80012);
  component->Cancel();
  EXPECT_EQ(component->Merge(*failed, nullptr).GetErrorCode(), 1);
  EXPECT_EQ(component->GetStatus().GetErrorCode(), 1);
}

// Components may share their settings, which then tell the same whatever each had been told before.
TEST(Merging, ComponentsOfOtherSettingsBeforeAreRefusedByWhatTheyHold) {
  const Table table = {{0, 1, 0, 1}, {0, 1, 0, 1}, {0, 1, 1, 0}};
  const struct {
    void (*fChange)(FSSettings&);
    MCFeature::MergeObstacle fObstacle;
    std::int64_t fPredictor;
  } cases[] = {
      {[](FSSettings& s) { s.SetTargetPosition(-1); }, MCFeature::kTargetColumn, 0},
      {[](FSSettings& s) { s.SetPredictorType(1, false); }, MCFeature::kPredictorType, 1},
      {[](FSSettings& s) { s.AddPredictor(true); }, MCFeature::kNPredictors, 0},
  };
  for (const auto& c : cases) {
    FSSettings settings(2, true, true);
    const auto component = Accumulated(settings, table);
    c.fChange(settings);
    const auto other = NewComponent(settings);
    Table wider = table;
    wider.push_back(table.back());
    BlocksOf source(wider, 4);
    ASSERT_TRUE(other->Accumulate(source, -1).IsOK());
    EXPECT_EQ(component->Merge(*other, nullptr), MCFeature::CannotMerge(c.fObstacle, c.fPredictor));
  }
  // A second pass into a component that has lost a predictor already.
  FSSettings settings(2, true, true);
  const Table constant = {{0, 1, 0, 1}, {0, 1, 0, 1}, {1, 1, 1, 1}};
  const auto removed = Accumulated(settings, constant), whole = Accumulated(settings, constant);
  EXPECT_TRUE(removed->CheckPredAllMissConst().IsOK());
  BlocksOf again(constant, 4);
  ASSERT_TRUE(removed->Accumulate(again, -1).IsOK());
  EXPECT_EQ(whole->Merge(*removed, nullptr), MCFeature::CannotMerge(MCFeature::kStage));
  EXPECT_EQ(removed->Merge(*whole, nullptr), MCFeature::CannotMerge(MCFeature::kStage));
}

TEST(Merging, CategoriesWithoutATranslationAreRefused) {
  FSSettings settings(2, true, true);
  const auto component = Accumulated(settings, {{0, 1, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}});
  const auto other = Accumulated(settings, {{0, 1, 0, 1}, {0, 1, 2, 1}, {0, -7, 1, 1}});
  struct Case {
    FSCategoryMaps fMaps;
    MCStatus fStatus;
  };
  using MCFeature::CannotMerge;
  const Case cases[] = {
      {{{0}, {}}, CannotMerge(MCFeature::kCategory, -1, 1)},
      {{{0, -1}, {}}, CannotMerge(MCFeature::kCategory, -1, 1)},
      {{{}, {{0, 1}, {}}}, CannotMerge(MCFeature::kCategory, 0, 2)},
      {{{}, {{}, {0, 1}}}, CannotMerge(MCFeature::kCategory, 1, -7)},
      {{{3, 3}, {}}, CannotMerge(MCFeature::kAmbiguousMap, -1)},
      {{{}, {{4, 5, 4}, {}}}, CannotMerge(MCFeature::kAmbiguousMap, 0)},
      {{{}, {{}}}, CannotMerge(MCFeature::kNMaps)},
  };
  const std::vector<double> before = ReportOf(*component);
  for (const Case& c : cases) {
    EXPECT_EQ(component->Merge(*other, &c.fMaps), c.fStatus);
    EXPECT_EQ(ReportOf(*component), before);
  }
  const FSCategoryMaps maps = {{1, 0}, {{2, 1, 0}, {}}};
  EXPECT_TRUE(component->Merge(*other, &maps).IsOK());
  int category = 0;
  std::pair<int, double> counts;
  EXPECT_TRUE(component->GetTargetCategoryInfo(1, category, counts));
  EXPECT_EQ(counts, std::pair(4, 4.0));
}

}  // namespace
