// The sums of a pass have one order, given by the places of the cases, and keep the digits that the
// data have.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "tests/InstructionSets.h"
#include "tests/feature/RandomRuns.h"
#include "tests/feature/Tables.h"

namespace {

using namespace MCFSCommon;

// A one-way layout of NIST's Statistical Reference Datasets, SmLs01 to SmLs09: nine treatments
// whose means are 0.4, 0.3, 0.5, 0.3, ... above the base; in each the mean, and then 0.1 below and
// above it by turns. https://www.itl.nist.gov/div898/strd/anova/anova.html
Table OneWayLayout(double base, int replicates) {
  Table table(2);
  for (int treatment = 0; treatment < 9; ++treatment) {
    const int mean = treatment == 0 ? 4 : (treatment % 2 == 1 ? 3 : 5);
    for (int k = 0; k < replicates; ++k) {
      const int tenths = k == 0 ? mean : (k % 2 == 1 ? mean - 1 : mean + 1);
      table[0].push_back(treatment);
      table[1].push_back(base + tenths / 10.0);
    }
  }
  return table;
}

// F of the doubles themselves, which beside 1e12 are far from tenths: differences from the first
// value are exact, and long doubles keep 19 digits of what is made of them.
double ExactF(const Table& table, int groups) {
  std::vector<long double> sums(static_cast<std::size_t>(groups)), squares(sums), counts(sums);
  for (std::size_t i = 0; i < table[0].size(); ++i) {
    const auto group = static_cast<std::size_t>(table[0][i]);
    const long double step = table[1][i] - table[1][0];
    sums[group] += step;
    squares[group] += step * step;
    counts[group] += 1;
  }
  long double sum = 0, n = 0, between = 0, within = 0;
  for (std::size_t g = 0; g < sums.size(); ++g) sum += sums[g], n += counts[g];
  for (std::size_t g = 0; g < sums.size(); ++g) {
    const long double distance = sums[g] / counts[g] - sum / n;
    between += counts[g] * distance * distance;
    within += squares[g] - sums[g] / counts[g] * sums[g];
  }
  return static_cast<double>(between / (groups - 1) / (within / (n - groups)));
}

double FOf(const Table& table, bool catPredictor) {
  FSSettings settings(1, catPredictor, !catPredictor);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 1000);
  EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
  std::vector<double> out(4);
  component->GetPredictorStats(kFStat, 0, out[0], out[1], out[2], out[3]);
  return out[1];
}

TEST(OrderOfSums, FKeepsItsDigitsForLargeValuesOfSmallSpread) {
  std::mt19937 random(3);
  for (const double base : {1.0, 1e6, 1e12}) {
    for (const int replicates : {21, 201, 2001}) {
      Table table = OneWayLayout(base, replicates);
      for (const bool shuffled : {false, true}) {
        if (shuffled) {
          std::vector<std::pair<double, double>> cases;
          for (std::size_t i = 0; i < table[0].size(); ++i) {
            cases.emplace_back(table[0][i], table[1][i]);
          }
          std::shuffle(cases.begin(), cases.end(), random);
          for (std::size_t i = 0; i < cases.size(); ++i) {
            table[0][i] = cases[i].first;
            table[1][i] = cases[i].second;
          }
        }
        const double f = ExactF(table, 9);
        if (base == 1.0) {
          EXPECT_NEAR(f, replicates, 1e-9 * replicates);  // as certified
        }
        EXPECT_NEAR(FOf(table, false), f, 1e-12 * f) << base << ' ' << replicates;
        EXPECT_NEAR(FOf({table[1], table[0]}, true), f, 1e-12 * f) << base << ' ' << replicates;
      }
    }
  }
}

// Weights: all 1, then some others; or whole numbers; or any from 1 on.
enum Weights { kOnes, kOnesThenAny, kWhole, kAny };

// Cases of every kind: a predictor without a gap until late, and a target that shows many
// categories late.
Table OddCases(bool catTarget, Weights weights) {
  Table table = RandomTable(6000, catTarget, 61);
  std::mt19937 random(8);
  for (std::size_t i = 0; i < table[0].size(); ++i) {
    const bool isOther = weights == kOnesThenAny && i > 2000 && random() % 3 == 0;
    table[1][i] = isOther ? 0.25 * static_cast<double>(random() % 9) : 1.0;
    if (weights == kWhole) table[1][i] += static_cast<double>(random() % 5);
    if (weights == kAny) table[1][i] += static_cast<double>(random() % 1000) / 999.0;
    if (i < 5000 && MCMV::IsMissing(table[4][i])) table[4][i] = 7.5;
    if (catTarget && i > 4000 && random() % 50 == 0) table[0][i] = 100.0 + random() % 60;
  }
  return table;
}

// Small weights go another way than others, and those that are 1 yet another: cases of any kind, in
// any pieces and by any instructions, must give the bits of single cases, and long runs those of
// their segments.
TEST(OrderOfSums, IsThatOfSingleCasesWhateverTheBlocksAndInstructions) {
  for (const bool catTarget : {true, false}) {
    for (const Weights weights : {kOnes, kOnesThenAny, kWhole, kAny}) {
      const Table table = OddCases(catTarget, weights);
      std::vector<double> expected;
      MCTest::ForEachInstructionSet([&] {
        for (const std::size_t length : {1u, 3u, 64u, 1000u, 4096u}) {
          FSSettings settings = SettingsFor(catTarget);
          FSFactory factory;
          const auto component = factory.CreateFSAlgorithm(&settings);
          BlocksOf source(table, length);
          EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
          if (expected.empty()) expected = ReportOf(*component);
          EXPECT_TRUE(SameBits(ReportOf(*component), expected)) << catTarget << weights << length;
        }
      });
    }
  }
}

}  // namespace
