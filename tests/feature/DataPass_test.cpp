// Laws of the data pass: blocks, single records and transactions give the same bits; weights are
// copies; the order of cases does not matter; progress, limits and cancel.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

#include "common/Cancel.h"
#include "common/MissingValue.h"
#include "common/Progress.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSLoops.h"
#include "tests/InstructionSets.h"
#include "tests/feature/RandomRuns.h"
#include "tests/feature/Tables.h"

namespace {

std::vector<double> RunOver(MCCommon::RecordIterator& source, FSSettings settings) {
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
  return ReportOf(*component);
}

TEST(DataPass, BlocksOfAnyLengthAndSingleRecordsGiveTheSameBits) {
  for (const bool catTarget : {true, false}) {
    const Table table = RandomTable(5000, catTarget, 7);
    RecordsOf records(table);
    const std::vector<double> expected = RunOver(records, SettingsFor(catTarget));
    for (const std::size_t length : {1u, 7u, 100u, 4096u}) {
      BlocksOf blocks(table, length);
      EXPECT_TRUE(SameBits(RunOver(blocks, SettingsFor(catTarget)), expected)) << length;
    }
  }
}

TEST(DataPass, TransactionsGiveTheBitsOfRecords) {
  Table table(4);  // target and three predictors
  Table transactions(4);
  std::mt19937 random(11);
  for (int i = 0; i < 400; ++i) {
    table[0].push_back(static_cast<double>(random() % 3));
    int items = 0;
    for (int j = 0; j < 3; ++j) {
      const bool there = random() % 4 != 0;
      double value =
          j == 1 ? 0.25 * static_cast<double>(random() % 100) : static_cast<double>(random() % 6);
      if (random() % 8 == 0) value = j == 1 ? KOVA_SystemMissing : -1.0;
      table[static_cast<std::size_t>(j) + 1].push_back(there ? value : KOVA_SystemMissing);
      if (!there) continue;
      ++items;
      const double row[] = {100.0 + i, 1.0 * j, value, table[0].back()};
      for (std::size_t k = 0; k < 4; ++k) transactions[k].push_back(row[k]);
    }
    // A case without any item does not appear among transactions.
    if (items > 0) continue;
    for (auto& column : table) column.pop_back();
  }
  FSSettings settings({true, false, true}, true);
  const auto report = [&settings](const Table& cases) {
    const auto component = FSFactory().CreateFSAlgorithm(&settings);
    BlocksOf source(cases, 64);
    EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
    std::vector<double> told = ReportOf(*component);
    for (int j = 0; j < 3; ++j) told.push_back(component->GetPredictorProfile(j).fMissing);
    return told;
  };
  const std::vector<double> expected = report(table);
  settings.SetFlagTrInput(true);
  EXPECT_TRUE(SameBits(report(transactions), expected));
}

TEST(DataPass, ItemsOfATransactionIncreaseAndLieAmongThePredictors) {
  struct Case {
    std::vector<double> fItems;
    std::int64_t fCode, fDatum0, fDatum1;
    double fCaseID = 77.0;
    std::int64_t fDatum2 = 77;
  };
  for (const Case& c :
       {Case{{1, 1}, 80007, 1, 1}, Case{{2, 0}, 80007, 2, 0}, Case{{0, 3}, 80008, 3, 3},
        Case{{-2}, 80008, -1, 3}, Case{{KOVA_SystemMissing}, 80008, -1, 3},
        Case{{-2}, 80008, -1, 3, 1e300, 0}}) {
    Table table(4);
    for (const double item : c.fItems) {
      const double row[] = {c.fCaseID, item, 1.0, 0.0};
      for (std::size_t k = 0; k < 4; ++k) table[k].push_back(row[k]);
    }
    FSSettings settings(3, true, true);
    settings.SetFlagTrInput(true);
    FSFactory factory;
    const auto component = factory.CreateFSAlgorithm(&settings);
    BlocksOf source(table, 16);
    const MCFeature::MCStatus status = component->Accumulate(source, -1);
    EXPECT_TRUE(status.IsError());
    EXPECT_EQ(status.GetErrorCode(), c.fCode);
    EXPECT_EQ(status.GetDiscreteDatum(0), c.fDatum0);
    EXPECT_EQ(status.GetDiscreteDatum(1), c.fDatum1);
    EXPECT_EQ(status.GetDiscreteDatum(2), c.fDatum2);
  }
}

// Records or transactions without the columns that they are to have are none that count.
TEST(DataPass, ColumnsThatAreNotThereLeaveNoCase) {
  const Table table = {{0, 1, 0}, {0, 1, 1}, {1, 1, 1}};
  const struct {
    void (*fChange)(FSSettings&);
    std::int64_t fCode;
  } cases[] = {{[](FSSettings& s) { s.SetTargetPosition(9); }, 80009},
               {[](FSSettings& s) { s.SetWeightPosition(9); }, 80013},
               {[](FSSettings& s) { s.SetFlagTrInput(true); }, 80009}};
  for (const auto& c : cases) {
    FSSettings settings(2, true, true);
    c.fChange(settings);
    FSFactory factory;
    BlocksOf source(table, 2);
    EXPECT_EQ(factory.CreateFSAlgorithm(&settings)->Accumulate(source, -1).GetErrorCode(), c.fCode);
  }
}

// A transaction of which every value is missing is an excluded case, and one whose predictor has
// been removed counts for the others.
TEST(DataPass, TransactionsCountWhatIsLeftOfThem) {
  const double none = KOVA_SystemMissing;
  FSSettings settings(3, true, true);
  settings.SetFlagTrInput(true);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  const Table table = {{1, 1, 1, 2, 2, 2, 3},
                       {0, 1, 2, 0, 1, 2, 0},
                       {5, 7, 1, 6, 7, 2, none},
                       {0, 0, 0, 1, 1, 1, 1}};
  for (int pass = 1; pass <= 2; ++pass) {
    BlocksOf source(table, 16);
    ASSERT_TRUE(component->Accumulate(source, -1).IsOK());
    double weights[2];
    int cases[2];
    component->GetNValidNExcluded(weights[0], weights[1], cases[0], cases[1]);
    EXPECT_EQ(cases[0], 2 * pass);
    EXPECT_EQ(cases[1], pass);
    EXPECT_TRUE(component->CheckPredAllMissConst().IsOK());
    EXPECT_EQ(component->GetIndicesDelPred(), (std::vector<int>{1}));
  }
}

TEST(DataPass, AWeightIsSoManyCopies) {
  Table weighted = RandomTable(600, true, 3);
  Table copies(6);
  for (std::size_t i = 0; i < weighted[0].size(); ++i) {
    double& weight = weighted[1][i];
    weight = static_cast<double>(i % 4);
    for (int k = 0; k < static_cast<int>(weight); ++k) {
      for (std::size_t j = 0; j < 6; ++j) copies[j].push_back(j == 1 ? 1.0 : weighted[j][i]);
    }
  }
  BlocksOf a(weighted, 128), b(copies, 128);
  const std::vector<double> x = RunOver(a, SettingsFor(true)), y = RunOver(b, SettingsFor(true));
  ASSERT_EQ(x.size(), y.size());
  const std::size_t statistics = x.size() - 4 - 4 * 3;  // unweighted counts differ, as they should
  for (std::size_t i = 0; i < statistics; ++i) {
    EXPECT_NEAR(x[i], y[i], 1e-11 * std::max(1.0, std::abs(x[i]))) << i;
  }
}

TEST(DataPass, TheOrderOfTheCasesDoesNotMatter) {
  const Table table = RandomTable(800, false, 5);
  std::vector<std::size_t> order(table[0].size());
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  Table shuffled(table.size());
  for (std::size_t j = 0; j < table.size(); ++j) {
    for (const std::size_t i : order) shuffled[j].push_back(table[j][i]);
  }
  BlocksOf a(table, 100), b(shuffled, 100);
  const std::vector<double> x = RunOver(a, SettingsFor(false)), y = RunOver(b, SettingsFor(false));
  ASSERT_EQ(x.size(), y.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] == KOVA_SystemMissing) {
      EXPECT_EQ(y[i], KOVA_SystemMissing);
    } else {
      EXPECT_NEAR(x[i], y[i], 1e-9 * std::max(1.0, std::abs(x[i]))) << i;
    }
  }
}

class Listener : public ProgressListener {
 public:
  void Report(const ProgressReport& report) override {
    fRecords.push_back(report.DiscreteMeasure("records"));
    fPredictors.push_back(report.DiscreteMeasure("predictors"));
    EXPECT_GE(report.ScaleMeasure("elapsedTime"), 0.0);
    EXPECT_EQ(report.DiscreteMeasure("cases"), -1);
    EXPECT_EQ(report.ScaleMeasure("time"), KOVA_SystemMissing);
  }
  std::vector<long> fRecords;
  std::vector<long> fPredictors;
};

TEST(DataPass, ProgressComesAfterEveryHundredthRecordAndEveryPredictor) {
  Table table(3);
  for (int i = 0; i < 250; ++i) {
    table[0].push_back(i % 2);
    table[1].push_back(i % 3);
    table[2].push_back(i % 5);
  }
  FSSettings settings(2, true, true);
  settings.SetNSkippedPredictorReports(0);
  Listener listener;
  settings.SetProgressListener(&listener);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 4096);
  EXPECT_TRUE(component->Accumulate(source, -1).IsOK());
  EXPECT_EQ(listener.fRecords, (std::vector<long>{100, 200}));
  EXPECT_TRUE(component->ScreenAndRank(false, 0).IsOK());
  EXPECT_EQ(listener.fPredictors, (std::vector<long>{-1, -1, 1, 2}));
}

TEST(DataPass, WhatStandsBehindAColumnOfWeightsIsNotLookedAt) {
  std::vector<double> weights(32, -1.0);
  MCTest::ForEachInstructionSet([&] {
    for (std::size_t n = 1; n < 20; ++n) {
      std::fill_n(weights.begin(), n, 1.0);
      std::fill(weights.begin() + static_cast<std::ptrdiff_t>(n), weights.end(), -1.0);
      const FSWeightTraits traits = FSLoops::InUse().fLookAtWeights(weights.data(), n);
      EXPECT_TRUE(traits.fbValid && traits.fbUnit) << n;
      EXPECT_EQ(traits.fSum, static_cast<double>(n));
    }
  });
}

TEST(DataPass, TheLimitCountsCasesWithAValidWeight) {
  Table table(3);
  for (int i = 0; i < 20; ++i) {
    table[0].push_back(i % 2);
    table[1].push_back(i % 2 == 0 ? 1.0 : 0.0);
    table[2].push_back(i % 3);
  }
  FSSettings settings(1, true, true);
  settings.SetWeightPosition(1);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 4);
  EXPECT_TRUE(component->Accumulate(source, 6).IsOK());
  double weights[2];
  int cases[2];
  component->GetNValidNExcluded(weights[0], weights[1], cases[0], cases[1]);
  EXPECT_EQ(cases[0], 6);
  EXPECT_EQ(component->GetTargetCategoryCount(0), 6);
}

class CancelAfter : public MCQueryCancel {
 public:
  explicit CancelAfter(int polls) : fPolls(polls) {}
  bool IsCancel() override { return fPolls-- <= 0; }

 private:
  int fPolls;
};

TEST(DataPass, ACancelAtAnyPollLeavesCode1AndAnEmptySet) {
  const Table table = RandomTable(300, true, 9);
  int cancelled = 0;
  for (int polls = 0; polls < 60; ++polls) {
    FSSettings settings = SettingsFor(true);
    CancelAfter cancel(polls);
    FSFactory factory;
    if (polls % 2 == 0) settings.SetCancelPointer(&cancel);
    const auto component = factory.CreateFSAlgorithm(&settings);
    if (polls % 2 == 1) component->SetCancelPtr(&cancel);
    BlocksOf source(table, 64);
    const MCFeature::MCStatus status = component->AccumulateAndRank(source, -1, true, 0);
    if (status.IsOK()) break;
    ++cancelled;
    EXPECT_EQ(status.GetErrorCode(), 1);
    double out[4];
    EXPECT_FALSE(component->GetPredictorStats(0, 0, out[0], out[1], out[2], out[3]));
    std::vector<int> indices;
    std::vector<double> values;
    EXPECT_EQ(component->GetTopPredictors(MCFSCommon::kPearson, indices, values, 0).GetErrorCode(),
              1);
    EXPECT_EQ(component->SortAndRank(0).GetErrorCode(), 1);
  }
  EXPECT_GT(cancelled, 10);
}

}  // namespace
