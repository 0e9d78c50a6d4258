// What describe says of distributions too large to be counted, held against counting them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include "host/data/MemoryTable.h"
#include "operations/ColumnSummary.h"
#include "operations/Moments.h"

namespace {

using PredSelect::ColumnSummary;

// A column of numbers as one pass over it sees it, in batches of `most` cases.
ColumnSummary Summarize(MCHost::MemoryTable& table, const std::vector<double>& values) {
  ColumnSummary summary(table.GetVariable(table.AddNumbers("x", values)));
  const auto scan = table.Scan({0});
  while (const MCHost::TableBatch* batch = scan->Next()) {
    summary.Observe(batch->fColumns[0], batch->fNCases);
  }
  summary.Finish();
  return summary;
}

TEST(ColumnSummary, CountsUpToItsLimitAndEstimatesBeyondIt) {
  for (const int nDistinct : {1, 2047, 2048, 2049, 5000, 12000, 100000}) {
    std::vector<double> values;
    for (int i = 0; i < 3 * nDistinct; ++i) values.push_back(0.1 * (i % nDistinct) - 7.0);
    values.push_back(-0.0);
    values.push_back(0.0);
    const auto nAll = static_cast<double>(nDistinct + (nDistinct < 71 ? 1 : 0));
    MCHost::MemoryTable table;
    const ColumnSummary summary = Summarize(table, values);
    EXPECT_EQ(summary.IsDistinctExact(), nAll <= 2048.0) << nDistinct;
    // Five standard errors of HyperLogLog with 4,096 registers.
    const double tolerance = summary.IsDistinctExact() ? 0.0 : 0.08 * nAll;
    EXPECT_NEAR(summary.Distinct(), nAll, tolerance);
    EXPECT_EQ(summary.MostFrequent(3).empty(), !summary.IsDistinctExact());
  }
}

TEST(ColumnSummary, EstimatesRanksToAPercentWhateverTheOrder) {
  std::mt19937 random(5);
  std::vector<double> values(300000);
  for (double& value : values) value = std::exp(static_cast<double>(random()) / 4e8);
  std::vector<double> sorted = values;
  std::sort(sorted.begin(), sorted.end());
  std::vector<double> falling(sorted.rbegin(), sorted.rend());
  for (const auto* order : {&values, &sorted, &falling}) {
    MCHost::MemoryTable table;
    const ColumnSummary summary = Summarize(table, *order);
    for (const double share : {0.01, 0.25, 0.5, 0.75, 0.99}) {
      const double quantile = summary.Quantile(share);
      const auto below = std::lower_bound(sorted.begin(), sorted.end(), quantile) - sorted.begin();
      EXPECT_NEAR(static_cast<double>(below) / 300000.0, share, 0.01);
    }
    double nBinned = 0.0;
    for (const double count : summary.Histogram(8)) nBinned += count;
    EXPECT_EQ(nBinned, 300000.0);
    EXPECT_EQ(summary.Maximum(), sorted.back());
    EXPECT_NEAR(
        summary.Mean() / 300000.0,
        [&] {
          double sum = 0.0;
          for (const double value : sorted) sum += value / 300000.0;
          return sum / 300000.0;
        }(),
        1e-9);
  }
}

TEST(ColumnSummary, GivesQuantilesOfFewNumbersAsTheyAreDefined) {
  MCHost::MemoryTable table;
  // Type 7 of Hyndman and Fan: 1 + 0.25 * 3 = 1.75 of 1, 2, 4, 8.
  const ColumnSummary summary = Summarize(table, {8, 1, 4, 2, NAN});
  EXPECT_EQ(summary.Quantile(0.0), 1.0);
  EXPECT_EQ(summary.Quantile(0.25), 1.75);
  EXPECT_EQ(summary.Quantile(0.5), 3.0);
  EXPECT_EQ(summary.Quantile(1.0), 8.0);
  EXPECT_DOUBLE_EQ(summary.Deviation(), std::sqrt(28.75 / 3.0));
  EXPECT_EQ(summary.Missing(), 1.0);
}

TEST(Moments, KeepTheirDigitsWhateverTheSizeOfTheNumbers) {
  const double units[] = {1, 1e-170, 1e-320, 1e200, 3e307};
  for (const double unit : units) {
    PredSelect::Moments moments;
    for (const double value : {1.0, 2.0, 3.5}) moments.Add(value * unit);
    const double digits = unit < 1e-300 ? 1e-2 : 1e-15;
    EXPECT_NEAR(moments.Mean() / unit, 6.5 / 3, 3 * digits) << unit;
    EXPECT_NEAR(moments.Deviation() / unit, std::sqrt(19.0 / 12), 2 * digits) << unit;
  }
  PredSelect::Moments far, mixed;
  for (int i = 0; i < 4000; ++i) far.Add(1e9 + i % 8 * 0x1p-20);
  EXPECT_NEAR(far.Deviation(), std::sqrt(5.25 * 4000 / 3999) * 0x1p-20, 1e-20);
  for (const double value : {1e-300, 2e-300, -1.7e308, 1.7e308}) mixed.Add(value);
  EXPECT_NEAR(mixed.Mean(), 0, 1e293);
  EXPECT_NEAR(mixed.Deviation() / 1.7e308, std::sqrt(2.0 / 3), 1e-15);
}

// Bins narrower than any number, and a range wider than any.
TEST(ColumnSummary, BinsNumbersOfEverySize) {
  constexpr double kLeast = std::numeric_limits<double>::denorm_min();
  const struct {
    std::vector<double> fValues, fBins;
  } cases[] = {{{0, 3, 7, 10}, {1, 1, 0, 1, 1}},
               {{5, 5}, {2, 0, 0, 0, 0}},
               {{0, kLeast}, {1, 0, 0, 0, 1}},
               {{0, 2 * kLeast, 6 * kLeast}, {1, 1, 0, 0, 1}},
               {{-1.7e308, 0, 1.7e308}, {1, 0, 1, 0, 1}}};
  for (const auto& one : cases) {
    MCHost::MemoryTable table;
    EXPECT_EQ(Summarize(table, one.fValues).Histogram(5), one.fBins) << one.fValues.back();
  }
}

TEST(ColumnSummary, ShowsTimesAsTheyAreWritten) {
  const struct {
    KOVA_Variable::Time fTime;
    double fValue;
    const char* fText;
  } cases[] = {{KOVA_Variable::kNoTime, 123456.0, "123456"},
               {KOVA_Variable::kDate, 19782.0, "2024-02-29"},
               {KOVA_Variable::kDate, -1.0, "1969-12-31"},
               {KOVA_Variable::kDateTime, -0.5, "1969-12-31T23:59:59.5"},
               {KOVA_Variable::kTimeOfDay, 45000.25, "12:30:00.25"},
               {KOVA_Variable::kDuration, -90.5, "-90.5"},
               {KOVA_Variable::kDateTime, 1e300, "1e+300"}};
  for (const auto& one : cases) {
    KOVA_Variable variable("x", 0);
    variable.SetTime(one.fTime);
    EXPECT_EQ(ColumnSummary(variable).ValueText(one.fValue), one.fText);
  }
}

}  // namespace
