// What a predictor looks like beside the target, for charts: the counts of the pass in the units of
// the values, whatever scale the sums are in.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "tests/feature/Tables.h"

namespace {

constexpr double kNone = MCMV::gMissingValue;

// A pass over a target (the first column), a categorical and a continuous predictor.
class Counted {
 public:
  Counted(Table table, bool catTarget)
      : fSettings({true, false}, catTarget), fTable(std::move(table)) {
    fpAlgorithm = FSFactory().CreateFSAlgorithm(&fSettings);
    RecordsOf records(fTable);
    EXPECT_FALSE(fpAlgorithm->AccumulateAndRank(records, -1, false, 0).IsError());
  }
  FSProfile ProfileOf(int predictor) const { return fpAlgorithm->GetPredictorProfile(predictor); }

 private:
  FSSettings fSettings;
  Table fTable;
  std::unique_ptr<IFSAlgorithm> fpAlgorithm;
};

// Categories, numbers, target; one value of each predictor is missing.
Table Cases(double unit, const std::vector<double>& target) {
  return {
      target, {0, 0, 1, 1, 1, kNone}, {1 * unit, 3 * unit, kNone, 6 * unit, 8 * unit, 9 * unit}};
}

}  // namespace

TEST(Profiles, CountPairsOfCategoriesAndWhatIsMissing) {
  const FSProfile profile = Counted(Cases(1, {0, 1, 0, 1, 1, 1}), true).ProfileOf(0);
  ASSERT_EQ(profile.fPairs.size(), 4u);
  const double expected[][3] = {{0, 0, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 2}};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(profile.fPairs[i].fPredictor, expected[i][0]) << i;
    EXPECT_EQ(profile.fPairs[i].fTarget, expected[i][1]) << i;
    EXPECT_EQ(profile.fPairs[i].fWeight, expected[i][2]) << i;
  }
  EXPECT_EQ(profile.fMissing, 1.0);
  EXPECT_TRUE(profile.fGroups.empty());
}

// By target category 0: 1 alone; by 1: 3, 6, 8, 9, of mean 6.5 and variance 7.
TEST(Profiles, HaveMomentsOfEachClassInTheUnitsOfTheValues) {
  for (const double unit : {1.0, 0x1p+900, 0x1p-900}) {
    const FSProfile profile = Counted(Cases(unit, {0, 1, 0, 1, 1, 1}), true).ProfileOf(1);
    ASSERT_EQ(profile.fGroups.size(), 2u);
    EXPECT_EQ(profile.fGroups[0].fMean, unit);
    EXPECT_EQ(profile.fGroups[0].fDeviation, 0.0);
    EXPECT_EQ(profile.fGroups[1].fWeight, 4.0);
    EXPECT_DOUBLE_EQ(profile.fGroups[1].fMean / unit, 6.5);
    EXPECT_DOUBLE_EQ(profile.fGroups[1].fDeviation / unit, std::sqrt(7.0));
  }
}

// Target 2 x + 1 but for the case without x; of the categories, 1 has targets 100, 13, 17.
TEST(Profiles, HaveTheTargetOfEachCategoryAndTheLineOfTwoNumbers) {
  const Counted run(Cases(1, {3, 7, 100, 13, 17, 19}), false);
  const FSProfile groups = run.ProfileOf(0);
  ASSERT_EQ(groups.fGroups.size(), 2u);
  EXPECT_DOUBLE_EQ(groups.fGroups[0].fMean, 5.0);
  EXPECT_DOUBLE_EQ(groups.fGroups[1].fMean, 130.0 / 3.0);
  const FSProfile::Line line = run.ProfileOf(1).fLine;
  EXPECT_EQ(line.fWeight, 5.0);
  EXPECT_DOUBLE_EQ(line.fMeanPredictor, 5.4);
  EXPECT_DOUBLE_EQ(line.fMeanTarget, 11.8);
  EXPECT_DOUBLE_EQ(line.fDeviationTarget, 2.0 * line.fDeviationPredictor);
  EXPECT_EQ(line.fCorrelation, 1.0);
}

TEST(Profiles, AreEmptyForWhatIsNotThere) {
  const Counted run({{0, 1, 0, 1}, {0, 0, 0, 0}, {1, 2, 3, 4}}, true);
  for (const int predictor : {-1, 0, 2}) {  // 0 is constant, and was removed
    const FSProfile profile = run.ProfileOf(predictor);
    EXPECT_TRUE(profile.fPairs.empty() && profile.fGroups.empty()) << predictor;
    EXPECT_EQ(profile.fLine.fWeight, 0.0) << predictor;
  }
}
