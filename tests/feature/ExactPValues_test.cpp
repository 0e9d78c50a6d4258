// Ranking by exact p-values: where 1 - c is 0, where a relation is perfect, and where nothing can
// be tested.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/distributions/FSTail.h"
#include "tests/feature/Tables.h"

namespace {

using namespace MCFSCommon;

constexpr double kMissing = KOVA_SystemMissing;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A component that has ranked; column 0 is the target.
struct Ranked {
  Ranked(const Table& table, const std::vector<bool>& types, bool catTarget, bool exact)
      : fSettings(types, catTarget) {
    fSettings.SetExactPValues(exact);
    FSFactory factory;
    fpComponent = factory.CreateFSAlgorithm(&fSettings);
    BlocksOf source(table, 50);
    EXPECT_FALSE(fpComponent->AccumulateAndRank(source, -1, false, 0).IsError());
  }
  double Value(RankCriteria criterion, std::size_t predictor) const {
    return fpComponent->GetCriterionValues(criterion)[predictor];
  }
  double LogP(RankCriteria criterion, int predictor) const {
    return fpComponent->GetPredictorEffect(criterion, predictor).fLogP;
  }

  FSSettings fSettings;
  std::unique_ptr<IFSAlgorithm> fpComponent;
};

// A target of two categories; predictor 1 has two categories and repeats it but for one case in 20,
// predictor 2 has 80 and determines it but for one case in 40, predictor 3 is continuous.
Table TiedAtZero() {
  Table table(4);
  for (int i = 0; i < 800; ++i) {
    const int target = i % 2;
    table[0].push_back(target);
    table[1].push_back(i % 40 < 2 ? 1 - target : target);
    table[2].push_back(2 * (i / 2 % 40) + (i / 80 % 10 < 1 && i % 8 < 2 ? 1 - target : target));
    table[3].push_back(target + 0.02 * ((i * 37) % 61));
  }
  return table;
}

TEST(ExactPValues, TellApartWhatRoundingTies) {
  const Table table = TiedAtZero();
  const Ranked rounded(table, {true, true, false}, true, false);
  const Ranked exact(table, {true, true, false}, true, true);
  for (const RankCriteria criterion : {kPearson, kLikelihood}) {
    for (const std::size_t j : {0u, 1u, 2u}) EXPECT_EQ(rounded.Value(criterion, j), 0.0);
    double values[4];
    exact.fpComponent->GetPredictorStats(criterion, 0, values[0], values[1], values[2], values[3]);
    EXPECT_EQ(values[0], exact.Value(criterion, 0));
    EXPECT_EQ(values[0], FSTail::UpperChi(values[1], values[2]));
    // What 78 more categories add to the statistic is less than they would add by chance.
    EXPECT_LT(exact.LogP(criterion, 0), exact.LogP(criterion, 1));
    EXPECT_LT(exact.fpComponent->GetRanks(criterion)[0], exact.fpComponent->GetRanks(criterion)[1]);
    EXPECT_GT(rounded.fpComponent->GetRanks(criterion)[0],
              rounded.fpComponent->GetRanks(criterion)[1]);
    EXPECT_EQ(rounded.LogP(criterion, 0), exact.LogP(criterion, 0));
  }
  // A predictor that is only ranked beside the others has the test that it is shown with.
  EXPECT_EQ(exact.LogP(kPearson, 2), exact.LogP(kFStat, 2));
  EXPECT_EQ(exact.Value(kPearson, 2), exact.Value(kFStat, 2));
}

TEST(ExactPValues, RankBelowTheSmallestDoubleByTheLogarithm) {
  Table table(3);
  for (int i = 0; i < 20000; ++i) {
    const double y = i % 100;
    table[0].push_back(y);
    table[1].push_back(y + (i * 31) % 57);
    table[2].push_back(-y + (i * 31) % 41);
  }
  const Ranked run(table, {false, false}, false, true);
  EXPECT_EQ(run.Value(kTStat, 0), 0.0);
  EXPECT_EQ(run.Value(kTStat, 1), 0.0);
  EXPECT_LT(run.LogP(kTStat, 1), run.LogP(kTStat, 0));
  EXPECT_LT(run.LogP(kTStat, 0), -1000.0);
  EXPECT_GT(run.LogP(kTStat, 1), -1e6);
  EXPECT_EQ(run.fpComponent->GetRanks(kTStat), (std::vector<int>{1, 0}));
}

TEST(ExactPValues, APerfectRelationComesFirst) {
  Table table(4);
  for (int i = 0; i < 64; ++i) {
    table[0].push_back(i);
    table[1].push_back(i + (i % 2 == 0 ? 1e-5 : -1e-5));
    table[2].push_back(i / 2);
    table[3].push_back(-4.0 * i);
  }
  const Ranked run(table, {false, false, false}, false, true);
  EXPECT_EQ(run.LogP(kTStat, 2), -kInfinity);
  EXPECT_EQ(run.Value(kTStat, 2), 0.0);
  EXPECT_EQ(run.fpComponent->GetRanks(kTStat), (std::vector<int>{1, 2, 0}));
  const Ranked groups({{0, 0, 1, 1, 2, 2}, {5, 5, 7, 7, 9, 9}, {1, 2, 3, 5, 8, 9}}, {false, false},
                      true, true);
  EXPECT_EQ(groups.LogP(kFStat, 0), -kInfinity);
  EXPECT_EQ(groups.fpComponent->GetRanks(kFStat), (std::vector<int>{0, 1}));
}

TEST(ExactPValues, NoDegreesOfFreedomGiveNone) {
  // Two cases lie on a line whatever they are; two groups of one have no spread.
  const Ranked line({{1, 2, 7, 4}, {3, 9, kMissing, kMissing}, {1, 2, 3, 5}}, {false, false}, false,
                    true);
  EXPECT_EQ(line.Value(kTStat, 0), kMissing);
  EXPECT_EQ(line.fpComponent->GetRanks(kTStat), (std::vector<int>{1, 0}));
  const Ranked groups({{0, 1, 0, 1}, {3, 9, kMissing, kMissing}, {1, 2, 3, 5}}, {false, false},
                      true, true);
  EXPECT_EQ(groups.Value(kFStat, 0), kMissing);
  // Only one category of the target is left where the first predictor is valid.
  const Ranked table({{0, 0, 1, 1}, {4, 5, -1, -1}, {1, 2, 1, 2}}, {true, true}, true, true);
  EXPECT_EQ(table.Value(kPearson, 0), kMissing);
  EXPECT_EQ(table.LogP(kPearson, 0), kMissing);
  EXPECT_EQ(table.fpComponent->GetRanks(kPearson), (std::vector<int>{1, 0}));
}

}  // namespace
