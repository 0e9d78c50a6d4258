// Screening, ranking statistics and selection of the component, on tables small enough to check by
// hand, and against formulas of another shape.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/ranking/FSPredSort.h"
#include "tests/feature/Tables.h"

namespace {

using namespace MCFSCommon;

constexpr double kMissing = KOVA_SystemMissing;

struct Analysis {
  // Column 0 is the target.
  Analysis(const Table& table, const std::vector<bool>& types, bool catTarget, bool screen = false)
      : fSettings(types, catTarget) {
    Start(table, screen);
  }
  Analysis(const Table& table, const FSSettings& settings, bool screen) : fSettings(settings) {
    Start(table, screen);
  }
  void Start(const Table& table, bool screen) {
    FSFactory factory;
    fpComponent = factory.CreateFSAlgorithm(&fSettings);
    BlocksOf source(table, 50);
    fStatus = fpComponent->AccumulateAndRank(source, -1, screen, 0);
  }
  std::vector<double> Stats(int criterion, int predictor = 0) const {
    std::vector<double> out(4);
    fpComponent->GetPredictorStats(criterion, predictor, out[0], out[1], out[2], out[3]);
    return out;
  }

  FSSettings fSettings;
  std::unique_ptr<IFSAlgorithm> fpComponent;
  MCFeature::MCStatus fStatus;
};

// Cases of a two-way table of counts, as (column, row) values.
Table CasesOf(const std::vector<std::vector<int>>& counts) {
  Table table(2);
  for (std::size_t i = 0; i < counts.size(); ++i) {
    for (std::size_t j = 0; j < counts[i].size(); ++j) {
      for (int k = 0; k < counts[i][j]; ++k) {
        table[0].push_back(static_cast<double>(j));
        table[1].push_back(static_cast<double>(i));
      }
    }
  }
  return table;
}

TEST(Ranking, APerfectTwoByTwoTableHasItsTextbookStatistics) {
  const Analysis run(CasesOf({{10, 0}, {0, 10}}), {true}, true);
  EXPECT_DOUBLE_EQ(run.Stats(kPearson)[1], 20.0);
  EXPECT_EQ(run.Stats(kPearson)[2], 1.0);
  EXPECT_DOUBLE_EQ(run.Stats(kLikelihood)[1], 40.0 * std::log(2.0));
  EXPECT_DOUBLE_EQ(run.Stats(kCramer)[0], 1.0);
  EXPECT_DOUBLE_EQ(run.Stats(kLambda)[0], 1.0);
  EXPECT_EQ(run.Stats(kLambda)[1], kMissing);
}

TEST(Ranking, AnIndependentTableHasPValueOneAndNoAssociation) {
  const Analysis run(CasesOf({{4, 8, 2}, {6, 12, 3}}), {true}, true);
  EXPECT_NEAR(run.Stats(kPearson)[1], 0.0, 1e-14);
  EXPECT_NEAR(run.Stats(kPearson)[0], 1.0, 1e-14);
  EXPECT_NEAR(run.Stats(kCramer)[0], 0.0, 1e-7);
  EXPECT_EQ(run.Stats(kLambda)[0], 0.0);
}

TEST(Ranking, AnovaKeepsItsDigitsForLargeValuesOfSmallSpread) {
  // Groups with means 0.1, 0.2, 0.3 above the base and equal spread: F is known exactly.
  for (const auto& [base, digits] :
       std::map<double, double>{{0.0, 1e-13}, {1e6, 1e-13}, {1e12, 1e-13}}) {
    Table table(2);
    double between = 0.0, within = 0.0;
    const double unit = 0.0625;  // exact in binary, also beside 1e12 (whose last place is 2^-13)
    for (int g = 0; g < 3; ++g) {
      for (int k = -10; k <= 10; ++k) {
        table[0].push_back(g);
        table[1].push_back(base + unit * (2 * g + k));
        within += unit * unit * k * k;
      }
      between += 21 * std::pow(unit * 2 * (g - 1), 2);
    }
    const Analysis run(table, {false}, true);
    const double f = between / 2 / (within / 60);
    EXPECT_NEAR(run.Stats(kFStat)[1], f, digits * f) << base;
  }
}

TEST(Ranking, AnExactLineHasPValueZeroAndNoT) {
  std::mt19937 random(23);
  const auto draw = [&random] { return static_cast<double>(random()) * 0x1p-32; };
  for (int pair = 0; pair < 2000; ++pair) {
    const double slope = 10.0 * (draw() - 0.5), intercept = 100.0 * draw();
    const double offset = pair % 3 == 0 ? 1e6 : 0.0;
    Table table(2);
    const int n = 3 + pair % 60;
    for (int i = 0; i < n; ++i) {
      table[1].push_back(offset + draw());
      table[0].push_back(intercept + slope * table[1].back());
    }
    const Analysis run(table, {false}, false);
    EXPECT_EQ(run.Stats(kTStat),
              (std::vector<double>{0.0, slope > 0.0 ? 1.0 : -1.0, kMissing, n - 2.0}))
        << pair;
  }
}

TEST(Ranking, AVeryStrongCorrelationIsNotAPerfectOne) {
  for (const int n : {4, 100, 3000}) {
    Table table(2);
    for (int i = 0; i < n; ++i) {
      // Off the line by turns: 1 - r^2 is 12 (noise / n)^2, to a few percent.
      table[1].push_back(i);
      table[0].push_back(i + (i % 4 == 0 || i % 4 == 3 ? 1.0 : -1.0) * n * 1e-5);
    }
    const Analysis run(table, {false}, false);
    const double r = run.Stats(kTStat)[1];
    EXPECT_NEAR(1.0 - r * r, 1.2e-9, 0.2e-9) << n;
    EXPECT_NEAR(run.Stats(kTStat)[2], r * std::sqrt((n - 2) / (1.0 - r * r)), 1e-3 * n * 1e5);
  }
}

TEST(Ranking, TwoCasesHaveACorrelationAndNoPValue) {
  for (const double y : {1.7, 5.0, -3.3}) {
    const Analysis run({{0.1, y}, {3.3, 3.4}}, {false}, false);
    EXPECT_EQ(run.Stats(kTStat), (std::vector<double>{kMissing, y > 0.1 ? 1.0 : -1.0, 0.0, 0.0}));
  }
}

TEST(Ranking, MixedPredictorsMeetInTheChiSquareRanking) {
  Table table(3);
  for (int i = 0; i < 60; ++i) {
    table[0].push_back(i % 2);
    table[1].push_back((i / 2) % 2);           // independent of the target
    table[2].push_back(10 * (i % 2) + i % 7);  // depends on it
  }
  const Analysis run(table, {true, false}, true);
  EXPECT_EQ(run.fpComponent->GetRanks(kPearson), (std::vector<int>{1, 0}));
  EXPECT_EQ(run.fpComponent->GetCriterionValues(kPearson)[1],
            run.fpComponent->GetCriterionValues(kFStat)[1]);
  EXPECT_EQ(run.Stats(kPearson, 1), std::vector<double>(4, kMissing));
}

TEST(FSPredSort, OrdersByValueThenTiesAndKeepsMissingLast) {
  using Less = bool (*)(const FSPredSort&, const FSPredSort&);
  const FSPredSort missing{kMissing, 1, 1, 0};
  struct Case {
    Less fLess;
    FSPredSort fFirst, fSecond;
  };
  const Case cases[] = {
      {FSPredSort::LessChisquare, {0.01, 1, 9, 0}, {0.02, 5, 1, 1}},
      {FSPredSort::LessChisquare, {0.01, 5, 9, 0}, {0.01, 1, 1, 1}},
      {FSPredSort::LessChisquare, {0.01, 5, -90, 0}, {0.01, 5, 1, 1}},
      {FSPredSort::LessCramer, {0.9, 1, 0, 0}, {0.5, 5, 0, 1}},
      {FSPredSort::LessCramer, {0.5, 5, 0, 0}, {0.5, 1, 0, 1}},
      {FSPredSort::LessLambda, {0.5, 2, 0, 0}, {0.5, 3, 0, 1}},
      {FSPredSort::LessFStat, {0.01, 5, 9, 0}, {0.01, 5, 1, 1}},
      {FSPredSort::LessTStat, {0.01, 5, 9, 0}, {0.01, 5, 1, 1}},
  };
  for (const Case& c : cases) {
    EXPECT_TRUE(c.fLess(c.fFirst, c.fSecond));
    EXPECT_FALSE(c.fLess(c.fSecond, c.fFirst));
    EXPECT_FALSE(c.fLess(c.fFirst, c.fFirst));
    EXPECT_TRUE(c.fLess(c.fFirst, missing));
    EXPECT_FALSE(c.fLess(missing, c.fFirst));
    EXPECT_FALSE(c.fLess(missing, missing));
  }
}

TEST(Screening, RemovesEachPredictorForTheFirstRuleThatApplies) {
  Table table(7);
  for (int i = 0; i < 100; ++i) {
    table[0].push_back(i % 2);
    table[1].push_back(-1);                   // all missing
    table[2].push_back(i < 50 ? -1 : 3);      // constant
    table[3].push_back(i < 71 ? -1 : i % 2);  // 71 percent missing
    table[4].push_back(i < 96 ? 0 : 1);       // 96 percent in one category
    table[5].push_back(i < 91 ? i : 0);       // 91 categories, most with one case
    table[6].push_back(i % 3);                // useful
  }
  const FSSettings settings(6, true, true);
  const Analysis run(table, settings, true);
  EXPECT_TRUE(run.fStatus.IsOK());
  EXPECT_EQ(run.fpComponent->GetIndicesDelPred(), (std::vector<int>{0, 1, 2, 3, 4}));
  EXPECT_EQ(run.fpComponent->GetReasonsDelPred(),
            (std::vector<int>{kAllMissing, kAllConstant, kManyMissing, kManyInSingleCategory,
                              kManyCategories}));
  FSSettings lenient(6, true, true);
  lenient.SetMaxPctMiss(100);
  lenient.SetMaxPctSingle(100);
  lenient.SetMaxNCatAsPct(100);
  const Analysis other(table, lenient, true);
  EXPECT_EQ(other.fpComponent->GetReasonsDelPred(),
            (std::vector<int>{kAllMissing, kAllConstant, kManyCategoriesWithOneCase}));
}

TEST(Screening, SmallSpreadIsMeasuredAgainstTheMeanAndOnItsOwn) {
  Table table(5);
  for (int i = 0; i < 100; ++i) {
    const double z = i % 2 == 0 ? 1.0 : -1.0;
    table[0].push_back(i % 4);
    table[1].push_back(1.0 + 0.0005 * z);
    table[2].push_back(0.0005 * z);  // mean 0: its coefficient of variation is not looked at
    table[3].push_back(1.0 + 0.5 * z);
    table[4].push_back(1e9 + z);
  }
  FSSettings settings(4, false, true);
  EXPECT_EQ(Analysis(table, settings, true).fpComponent->GetReasonsDelPred(),
            (std::vector<int>{kSmallVariation, kSmallVariation}));
  settings.SetMinStddev(0.1);
  const Analysis run(table, settings, true);
  EXPECT_EQ(run.fpComponent->GetIndicesDelPred(), (std::vector<int>{0, 1, 3}));
  EXPECT_EQ(run.fpComponent->GetReasonsDelPred(),
            (std::vector<int>{kSmallStddev, kSmallStddev, kSmallVariation}));
}

TEST(Screening, ARunThatLosesAllPredictorsEndsInAWarning) {
  Table constant = {{0, 1, 0, 1}, {3, 3, 3, 3}};
  const Analysis first(constant, {false}, true, true);
  EXPECT_TRUE(first.fStatus.IsWarning());
  EXPECT_EQ(first.fStatus.GetErrorCode(), 80010);
  EXPECT_FALSE(first.fpComponent->ArePredictorsRanked());
  Table rare = {{0, 1, 0, 1}, {0, 1, 2, 3}};
  const Analysis second(rare, {true}, true, true);
  EXPECT_EQ(second.fStatus.GetErrorCode(), 80011);
}

TEST(Screening, WithoutATargetEveryReasonIsReported) {
  Table table(2);
  for (int i = 0; i < 100; ++i) {
    table[0].push_back(i < 80 ? -1 : i);
    table[1].push_back(i % 3);
  }
  FSSettings settings(2, true, true);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 30);
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  EXPECT_TRUE(component->CheckPredictorsNoTarget(source, indices, reasons, -1).IsOK());
  EXPECT_EQ(indices, std::vector<int>{0});
  EXPECT_EQ(reasons[0],
            (std::vector<int>{kManyMissing, kManyCategories, kManyCategoriesWithOneCase}));
}

TEST(Selection, TopPredictorsFollowTheSortAndItsSize) {
  Table table(11);
  for (int i = 0; i < 200; ++i) {
    table[0].push_back(i % 2);
    for (int j = 0; j < 10; ++j) table[j + 1].push_back(i % 2 + (i * (j + 3)) % (5 * j + 7));
  }
  FSSettings settings(10, false, true);
  FSFactory factory;
  const auto all = factory.CreateFSAlgorithm(&settings);
  const auto best = factory.CreateFSAlgorithm(&settings);
  std::vector<int> order, some;
  std::vector<double> values;
  EXPECT_EQ(all->GetTopPredictors(kFStat, order, values, 0).GetErrorCode(), 6);
  BlocksOf a(table, 64), b(table, 64);
  EXPECT_TRUE(all->AccumulateAndRank(a, -1, false, 0).IsOK());
  EXPECT_TRUE(best->AccumulateAndRank(b, -1, false, 4).IsOK());
  EXPECT_TRUE(all->GetTopPredictors(kFStat, order, values, 0).IsOK());
  EXPECT_EQ(order.size(), 10u);
  for (std::size_t i = 1; i < values.size(); ++i) EXPECT_LE(values[i - 1], values[i]);
  for (const int n : {0, 4, 9}) {
    EXPECT_TRUE(best->GetTopPredictors(kFStat, some, values, n).IsOK());
    EXPECT_EQ(some, std::vector<int>(order.begin(), order.begin() + 4)) << n;
  }
  EXPECT_EQ(best->GetRanks(kFStat)[static_cast<std::size_t>(order[3])], 3);
  EXPECT_EQ(best->GetRanks(kFStat)[static_cast<std::size_t>(order[4])], -1);
  EXPECT_EQ(all->GetTopPredictors(kPearson, some, values, 0).GetErrorCode(), 80006);
  const MCFeature::MCStatus more = all->GetTopPredictors(kFStat, some, values, 50);
  EXPECT_TRUE(more.IsWarning());
  EXPECT_EQ(more.GetDiscreteDatum(0), 10);
  EXPECT_EQ(some, order);
}

TEST(Selection, MoreBestPredictorsThanThereAreIsAnErrorAfterRanking) {
  const Table table = {{0, 1, 0, 1, 0, 1}, {1, 2, 3, 4, 5, 7}};
  FSSettings settings(1, false, true);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 10);
  const MCFeature::MCStatus status = component->AccumulateAndRank(source, -1, true, 50);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 80012);
  EXPECT_EQ(status.GetDiscreteDatum(0), 1);
  EXPECT_TRUE(component->ArePredictorsRanked());
}

TEST(Status, NoUsableCaseOrWeightIsAnErrorWithATargetAndAWarningWithout) {
  const Table noTarget = {{-1, -1}, {1, 2}};
  EXPECT_EQ(Analysis(noTarget, {true}, true).fStatus.GetErrorCode(), 80009);
  FSSettings weighted(1, true, true);
  weighted.SetWeightPosition(1);
  const Table noWeight = {{0, 1}, {0, kMissing}, {1, 2}};
  const Analysis run(noWeight, weighted, false);
  EXPECT_TRUE(run.fStatus.IsError());
  EXPECT_EQ(run.fStatus.GetErrorCode(), 80013);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&weighted);
  BlocksOf source(noWeight, 10);
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  EXPECT_TRUE(component->CheckPredictorsNoTarget(source, indices, reasons, -1).IsWarning());
  weighted.SetWeightPosition(0);
  EXPECT_EQ(Analysis({{0, 0}, {0, 1}}, weighted, false).fStatus.GetErrorCode(), 80013);
}

TEST(FSSettings, CriteriaFollowTargetAndPredictors) {
  struct Case {
    std::vector<bool> fTypes;
    bool fbCatTarget;
    FSSettings::Criteria fCriteria;
  };
  const Case cases[] = {
      {{true, true}, true, {true, true, true, true, false, false}},
      {{false}, true, {false, false, false, false, true, false}},
      {{true, false}, true, {true, true, false, false, true, false}},
      {{true}, false, {false, false, false, false, true, false}},
      {{false}, false, {false, false, false, false, false, true}},
      {{false, true}, false, {false, false, false, false, true, true}},
  };
  for (const Case& c : cases) {
    FSSettings one(c.fTypes, c.fbCatTarget);
    EXPECT_EQ(one.GetCriteria(), c.fCriteria);
    FSSettings other;
    for (const bool type : c.fTypes) other.AddPredictor(type);
    other.SetTargetType(c.fbCatTarget);
    EXPECT_EQ(other.GetCriteria(), c.fCriteria);
  }
  FSSettings settings(3, true, true);
  for (const RankCriteria off : {kPearson, kLikelihood, kCramer}) {
    EXPECT_TRUE(settings.SetCriterion(off, false));
  }
  EXPECT_FALSE(settings.SetCriterion(kLambda, false));
  EXPECT_FALSE(settings.SetCriterion(kFStat, true));
  EXPECT_TRUE(settings.SetCriterion(kTStat, false));
  settings.AddPredictor(false);  // mixed: lambda cannot stay
  EXPECT_EQ(settings.GetCriteria(), (FSSettings::Criteria{true, true, false, false, true, false}));
}

TEST(FSSettings, ASetOfContinuousPredictorsStaysSoWhenOneBecomesCategorical) {
  FSSettings settings(3, false, true);
  settings.SetPredictorType(1, true);
  EXPECT_EQ(settings.GetTypeAllPredictors(), kAllContinuous);
  settings.SetPredictorType(0, 2, true);
  EXPECT_EQ(settings.GetTypeAllPredictors(), kAllCategorical);
  settings.SetPredictorType(2, false);
  EXPECT_EQ(settings.GetTypeAllPredictors(), kMixed);
  settings.AddPredictor(false);
  settings.SetPredictorType(2, true);
  EXPECT_EQ(settings.GetTypeAllPredictors(), kMixed);
  settings.SetPredictorType(0, 2, false);
  EXPECT_EQ(settings.GetTypeAllPredictors(), kAllContinuous);
  EXPECT_EQ(FSSettings(0, true, true).GetTypeAllPredictors(), kAllCategorical);
  EXPECT_EQ(FSSettings(-1, false, true).GetTypeAllPredictors(), kAllContinuous);
}

TEST(FSSettings, PassOverWhatIsOutOfRange) {
  using S = FSSettings;
  void (*const changes[])(S&) = {
      [](S& s) { s.SetPredictorType(-1, true); },
      [](S& s) { s.SetPredictorType(2, true); },
      [](S& s) { s.SetPredictorType(-1, 1, true); },
      [](S& s) { s.SetPredictorType(1, 0, true); },
      [](S& s) { s.SetPredictorType(0, 2, true); },
      [](S& s) { s.SetNSkippedRecordReports(-1); },
      [](S& s) { s.SetNSkippedPredictorReports(-1); },
      [](S& s) { s.SetCaseIDPosition(-1); },
      [](S& s) { s.SetMinVariation(-0.5); },
      [](S& s) { s.SetMinStddev(std::nan("")); },
      [](S& s) { EXPECT_FALSE(s.SetCriterion(static_cast<RankCriteria>(kNCriteria), true)); },
  };
  const auto shown = [](const S& settings) {
    std::ostringstream out;
    settings.Display(out);
    return out.str();
  };
  const S before({true, false}, true);
  for (const auto& change : changes) {
    S settings = before;
    change(settings);
    EXPECT_EQ(shown(settings), shown(before)) << &change - changes;
  }
  S settings = before;
  settings.SetNThreads(0);
  EXPECT_EQ(settings.GetNThreads(), before.GetNThreads());
  for (const int outside : {-1, 9}) {
    EXPECT_FALSE(before.IsCatPredictor(outside));
    EXPECT_FALSE(before.GetCriterion(static_cast<RankCriteria>(outside)));
  }
}

TEST(FSSettings, DefaultSizeAndThresholdsKeepTheirBounds) {
  for (const auto& [n, expected] : std::map<int, int>{{20, 20}, {100, 30}, {500, 45}, {1000, 63}}) {
    EXPECT_EQ(FSSettings(n, true, true).GetNBestPredictors(0), expected);
    EXPECT_EQ(FSSettings().GetNBestPredictors(n), expected);
  }
  FSSettings settings;
  EXPECT_EQ(settings.GetTypeAllPredictors(), kNoPredictors);
  EXPECT_DOUBLE_EQ(settings.GetMaxPctMiss(), 70.0);
  for (const double refused : {100.5, -1.0, std::nan("")}) {
    settings.SetMaxPctMiss(refused);
    EXPECT_DOUBLE_EQ(settings.GetMaxPctMiss(), 70.0);
  }
  settings.SetMaxPctMiss(100);
  EXPECT_EQ(settings.GetMaxMissFraction(), 1.0);
  settings.SetTargetPosition(-5);
  settings.SetWeightPosition(3);
  settings.SetWeightPosition(-1);
  EXPECT_EQ(settings.GetTargetPosition(), -1);
  EXPECT_EQ(settings.GetWeightPosition(), 3);
}

}  // namespace
