// Input that nobody means but somebody sends: values whose squares overflow, codes at the ends of
// int, tens of thousands of categories, calls in another order.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "common/Progress.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "tests/feature/RandomRuns.h"

namespace {

using namespace MCFSCommon;

constexpr double kMissing = KOVA_SystemMissing;
constexpr int kMostInt = std::numeric_limits<int>::max();

struct Component {
  explicit Component(const FSSettings& settings) : fSettings(settings) {
    FSFactory factory;
    fpComponent = factory.CreateFSAlgorithm(&fSettings);
  }
  IFSAlgorithm* operator->() const { return fpComponent.get(); }
  MCFeature::MCStatus Accumulate(const Table& table) const {
    BlocksOf source(table, 100);
    return fpComponent->Accumulate(source, -1);
  }
  std::vector<double> Stats(int criterion, int predictor = 0) const {
    std::vector<double> out(4);
    fpComponent->GetPredictorStats(criterion, predictor, out[0], out[1], out[2], out[3]);
    return out;
  }

  FSSettings fSettings;
  std::unique_ptr<IFSAlgorithm> fpComponent;
};

TEST(OddInput, AStatisticThatOverflowsIsMissingAndRanksLast) {
  for (const bool catTarget : {true, false}) {
    FSSettings settings(2, false, catTarget);
    settings.SetWeightPosition(1);
    settings.SetWeightToFreq(kAsIs);
    const Component run(settings);
    EXPECT_TRUE(
        run.Accumulate({{0, 0, 1, 1}, {1e307, 1e307, 1e307, 1e307}, {9, -9, 7, 1}, {0, 0, 1, 1}})
            .IsOK());
    EXPECT_TRUE(run->SortAndRank(0).IsOK());
    const RankCriteria criterion = catTarget ? kFStat : kTStat;
    EXPECT_EQ(run.Stats(criterion)[0], kMissing);
    EXPECT_EQ(run->GetRanks(criterion), (std::vector<int>{1, 0}));
  }
}

// Every value of the continuous columns times 2^exponent.
Table InUnits(Table table, bool catTarget, int exponent) {
  for (const std::size_t column : {0, 4, 5}) {
    if (column == 0 && catTarget) continue;
    for (double& value : table[column]) {
      if (value != kMissing) value = std::ldexp(value, exponent);
    }
  }
  return table;
}

TEST(OddInput, TheUnitOfTheValuesChangesNoDigit) {
  for (const bool catTarget : {true, false}) {
    const Table table = RandomTable(700, catTarget, 51);
    std::vector<double> expected;
    for (const int exponent : {0, -1000, -665, 665, 1000}) {
      const Component run(SettingsFor(catTarget));
      EXPECT_TRUE(run.Accumulate(InUnits(table, catTarget, exponent)).IsOK());
      EXPECT_TRUE(run->ScreenAndRank(true, 0).IsOK());
      if (exponent == 0) expected = ReportOf(*run.fpComponent);
      EXPECT_TRUE(SameBits(ReportOf(*run.fpComponent), expected)) << catTarget << exponent;
    }
  }
}

// The last pairs of a few are beyond what is summed without a look at the scale.
TEST(OddInput, AScaleThatGrowsAmidPairsChangesNoDigit) {
  const Table table = {{1, 3, 2, 5, 9, 4}, {2, 1, 5, 3, 4, 9}};
  for (const std::size_t scaled : {0, 1}) {
    Table large = table;
    for (double& value : large[scaled]) value = std::ldexp(value, 398);
    const Component plain(FSSettings(1, false, false)), run(FSSettings(1, false, false));
    for (const auto& [component, cases] : {std::pair{&plain, &table}, {&run, &large}}) {
      EXPECT_TRUE(component->Accumulate(*cases).IsOK());
      EXPECT_TRUE((*component)->SortAndRank(0).IsOK());
    }
    EXPECT_EQ(run.Stats(kTStat), plain.Stats(kTStat)) << scaled;
  }
}

// Small values that come before large ones are nothing beside them, in one component or two.
TEST(OddInput, ValuesOfAllSizesMayMeet) {
  for (const bool catTarget : {true, false}) {
    const Table table = RandomTable(300, catTarget, 52);
    const Table tiny = InUnits(table, catTarget, -900), huge = InUnits(table, catTarget, 900);
    const Component run(SettingsFor(catTarget)), merged(SettingsFor(catTarget)),
        other(SettingsFor(catTarget));
    for (const Table* part : {&tiny, &table, &huge}) EXPECT_TRUE(run.Accumulate(*part).IsOK());
    for (const Table* part : {&tiny, &huge}) EXPECT_TRUE(merged.Accumulate(*part).IsOK());
    EXPECT_TRUE(other.Accumulate(table).IsOK());
    EXPECT_TRUE(merged->Merge(*other.fpComponent, nullptr).IsOK());
    EXPECT_TRUE(run->ScreenAndRank(false, 0).IsOK());
    EXPECT_TRUE(merged->ScreenAndRank(false, 0).IsOK());
    for (const int j : {0, 2, 3}) {
      for (const RankCriteria criterion : {kFStat, kTStat}) {
        const std::vector<double> x = run.Stats(criterion, j), y = merged.Stats(criterion, j);
        for (std::size_t k = 0; k < x.size(); ++k) {
          EXPECT_NEAR(x[k], y[k], 1e-9 * std::abs(x[k])) << j << criterion << k;
        }
      }
    }
    EXPECT_NE(run.Stats(kFStat, catTarget ? 2 : 0)[0], kMissing);
  }
}

TEST(OddInput, NoVariationWithinTheGroupsIsZeroVariation) {
  for (const double unit : {1.0, 1e-200, 1e200}) {
    const Component run(FSSettings(2, false, true));
    const Table table = {{0, 0, 1, 1},
                         {5 * unit, 5 * unit, 7 * unit, 7 * unit},
                         {5 * unit, 6 * unit, 7 * unit, 8 * unit}};
    EXPECT_TRUE(run.Accumulate(table).IsOK());
    EXPECT_TRUE(run->SortAndRank(0).IsOK());
    EXPECT_EQ(run.Stats(kFStat, 0)[0], 0.0);
    EXPECT_EQ(run.Stats(kFStat, 0)[1], kMissing);
    EXPECT_NEAR(run.Stats(kFStat, 1)[1], 8.0, 1e-13);
  }
}

TEST(OddInput, WeightsThatNoNumberCanHoldEndTheRun) {
  for (const bool catTarget : {true, false}) {
    FSSettings settings({true, false}, catTarget);
    settings.SetWeightPosition(1);
    settings.SetWeightToFreq(kAsIs);
    const Table table = {{0, 0, 1, 1}, {1e308, 1, 1, 1e308}, {0, 1, 1, 0}, {1, 2, 4, 3}};
    const Component run(settings);
    EXPECT_EQ(run.Accumulate(table), MCFeature::MCStatus(80016, false));
    EXPECT_TRUE(run->SortAndRank(0).IsError());
    EXPECT_FALSE(run->ArePredictorsRanked());
  }
}

// Where no number holds the product of two counts: sizes stay, chi-squares grow with the weights.
TEST(OddInput, HugeWeightsOfCategoriesTellTheSame) {
  constexpr double kWeights[] = {0x1p60, 1e300};
  std::vector<FSEffect> effects;
  for (const double weight : kWeights) {
    FSSettings settings({true}, true);
    settings.SetWeightPosition(1);
    const Component run(settings);
    EXPECT_TRUE(
        run.Accumulate(
               {{0, 0, 0, 1, 1, 1, 2}, std::vector<double>(7, weight), {0, 1, 1, 1, 0, 0, 0}})
            .IsOK());
    EXPECT_TRUE(run->SortAndRank(0).IsOK());
    effects.push_back(run->GetPredictorEffect(kPearson, 0));
    EXPECT_NEAR(effects.back().fChiSquare / (7.0 * weight), 2.0 / 9.0, 1e-14);
    EXPECT_NEAR(run.Stats(kLikelihood)[1] / run.Stats(kPearson)[1], 1.23592, 1e-4);
  }
  EXPECT_NEAR(effects[1].fSize, effects[0].fSize, 1e-14);
  EXPECT_NEAR(effects[1].fInformation, effects[0].fInformation, 1e-14);
}

TEST(OddInput, TensOfThousandsOfCategoriesOnBothSidesNeedNoGrid) {
  Table table(2);
  constexpr int kCategories = 60000;
  for (int i = 0; i < 2 * kCategories; ++i) {
    for (auto& column : table) column.push_back(i % kCategories);
  }
  const Component run(FSSettings(1, true, true));
  EXPECT_TRUE(run.Accumulate(table).IsOK());
  EXPECT_TRUE(run->SortAndRank(0).IsOK());
  EXPECT_DOUBLE_EQ(run.Stats(kPearson)[1], 2.0 * kCategories * (kCategories - 1));
  const double likelihood = 4.0 * kCategories * std::log(kCategories);
  EXPECT_NEAR(run.Stats(kLikelihood)[1], likelihood, 1e-11 * likelihood);
  EXPECT_DOUBLE_EQ(run.Stats(kCramer)[0], 1.0);
  EXPECT_DOUBLE_EQ(run.Stats(kLambda)[0], 1.0);
}

TEST(OddInput, CategoriesReachTheEndsOfInt) {
  const Component run(FSSettings(1, true, true));
  EXPECT_TRUE(
      run.Accumulate({{-3e9, 3e9, -3e9, 3e9, -1.5}, {1e300, -1e300, 1e300, -1e300, 0}}).IsOK());
  int category = 0;
  std::pair<int, double> counts;
  EXPECT_TRUE(run->GetTargetCategoryInfo(0, category, counts));
  EXPECT_EQ(category, std::numeric_limits<int>::min());
  EXPECT_TRUE(run->GetTargetCategoryInfo(1, category, counts));
  EXPECT_EQ(category, kMostInt);
  EXPECT_DOUBLE_EQ(run.Stats(kCramer)[0], 1.0);
}

TEST(OddInput, AScreeningBeforeTheDataDoesNotKeepThePassFromItsVariances) {
  const Component run(FSSettings(1, false, false));
  EXPECT_TRUE(run->CheckPredAllMissConst().IsOK());
  EXPECT_TRUE(run.Accumulate({{1, 2, 3, 4}, {2, 1, 4, 3}}).IsOK());
  EXPECT_TRUE(run->SortAndRank(0).IsOK());
  EXPECT_NEAR(run.Stats(kTStat)[1], 0.6, 1e-15);
  // A second pass adds to the first.
  EXPECT_TRUE(run.Accumulate({{5}, {5}}).IsOK());
  EXPECT_TRUE(run->SortAndRank(0).IsOK());
  EXPECT_NEAR(run.Stats(kTStat)[1], 0.8, 1e-15);
}

TEST(OddInput, APassWithoutATargetAddsOnlyMissingValuesToPairs) {
  std::vector<double> statistics[2];
  for (const bool more : {false, true}) {
    const Component run(FSSettings({true, false}, true));
    EXPECT_TRUE(run.Accumulate({{0, 1, 0, 1}, {0, 1, 1, 0}, {1, 2, 3, 5}}).IsOK());
    if (more) {
      const Table table = {{0, kMissing, 1}, {7, 8, kMissing}};
      BlocksOf source(table, 2);
      std::vector<int> indices;
      std::vector<std::vector<int>> reasons;
      EXPECT_FALSE(run->CheckPredictorsNoTarget(source, indices, reasons, -1).IsError());
    }
    EXPECT_TRUE(run->SortAndRank(0).IsOK());
    statistics[more ? 1 : 0] = run.Stats(kFStat, 1);
  }
  EXPECT_EQ(statistics[1], statistics[0]);
}

class CountingListener : public ProgressListener {
 public:
  void Report(const ProgressReport&) override { ++fReports; }
  int fReports = 0;
};

TEST(OddInput, TheLongestIntervalOfProgressReportsIsNever) {
  FSSettings settings(1, true, true);
  settings.SetNSkippedRecordReports(kMostInt);
  settings.SetNSkippedPredictorReports(kMostInt);
  CountingListener listener;
  settings.SetProgressListener(&listener);
  const Component run(settings);
  EXPECT_TRUE(run.Accumulate({{0, 1, 0, 1}, {0, 1, 1, 0}}).IsOK());
  EXPECT_TRUE(run->SortAndRank(0).IsOK());
  EXPECT_EQ(listener.fReports, 0);
}

TEST(OddInput, ACriterionThatThereIsNotHasNoResults) {
  const Component run(FSSettings(1, true, true));
  for (const int criterion : {6, 7}) {
    const auto none = static_cast<RankCriteria>(criterion);
    EXPECT_TRUE(run->GetRanks(none).empty());
    EXPECT_TRUE(run->GetCriterionValues(none).empty());
  }
}

TEST(OddInput, ACancelBetweenStagesIsSeenByTheNextQuery) {
  const Component run(FSSettings(1, true, true));
  EXPECT_TRUE(run.Accumulate({{0, 1, 0, 1}, {0, 1, 1, 0}}).IsOK());
  EXPECT_TRUE(run->SortAndRank(0).IsOK());
  run->Cancel();
  std::vector<int> indices;
  std::vector<double> values;
  EXPECT_EQ(run->GetTopPredictors(kPearson, indices, values, 0).GetErrorCode(), 1);
}

TEST(OddInput, TransactionsCountTheirTargetAndNameAnyCase) {
  FSSettings settings(2, true, true);
  settings.SetFlagTrInput(true);
  settings.SetTargetPosition(-1);
  const Component run(settings);
  EXPECT_TRUE(run.Accumulate({{1, 1, 2}, {0, 1, 0}, {0, 1, 1}, {3, 3, 4}}).IsOK());
  EXPECT_EQ(run->GetNTargetCategories(), 2);
  EXPECT_EQ(run->GetTargetCategoryCount(1), 1);
  EXPECT_EQ(run->GetTargetCategoryCount(2), 0);
  const auto status = run.Accumulate({{5e9, 5e9}, {1, 0}, {0, 1}, {3, 3}});
  EXPECT_EQ(status.GetErrorCode(), 80007);
  EXPECT_EQ(status.GetDiscreteDatum(2), 5000000000);
}

}  // namespace
