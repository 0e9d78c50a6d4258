#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBBinningEncoder.h"
#include "naivebayes/NBScoring.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::TestRecords;

constexpr double kMissing = MCMV::gMissingValue;
constexpr double kHighest = std::numeric_limits<double>::max();

NBVarList MakeWideList(int inputs) {
  NBVarList list;
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  for (int j = 0; j < inputs; ++j) {
    list.AddCatVar("x" + std::to_string(j), "", 2, INBVariable::kNumericCategorical,
                   INBVariable::kInput);
  }
  return list;
}

// log of Pi(k) times the product of P(m|k), from the counts by their definition.
std::vector<long double> LogJoints(const std::vector<Record>& training, const Record& record) {
  const long double n = training.size();
  std::vector<long double> joints;
  for (int k = 0; k < 3; ++k) {
    const auto isClass = [k](const Record& r) { return r[0] == k; };
    const auto count = std::count_if(training.begin(), training.end(), isClass);
    long double joint = std::log((count + 1 / n) / (n + 3 / n));
    for (std::size_t j = 1; j < record.Size(); ++j) {
      if (record[j] < 0) continue;
      int cell = 0, total = 0;
      for (const Record& r : training) {
        total += isClass(r) && r[j] >= 0;
        cell += isClass(r) && r[j] == record[j];
      }
      joint += std::log((cell + 1 / n) / (total + 2 / n));
    }
    joints.push_back(joint);
  }
  return joints;
}

TEST(Laws, TenThousandInputsScoreAsTheirLogarithmsSay) {
  constexpr int kInputs = 10000, kRecords = 40;
  std::mt19937 random(3);
  std::vector<Record> records;
  for (int i = 0; i < kRecords; ++i) {
    Record r(kInputs + 1);
    r[0] = i % 3;
    for (int j = 1; j <= kInputs; ++j) {
      r[j] = random() % 20 == 0 ? kMissing : random() % 100 < 49 + (i % 3 == 1) ? 1 : 0;
    }
    records.push_back(r);
  }
  NBAlgorithm algorithm(NaiveBayesSettings(), MakeWideList(kInputs));
  TestRecords source(records);
  ASSERT_FALSE(algorithm.BuildModel(source, kRecords).IsError());
  ASSERT_EQ(algorithm.GetNumberOfInputVars(), kInputs);
  NBOutput output(3);
  NBOutputStatistics stats(3), expected(3);
  for (const Record& record : records) {
    const std::vector<long double> joints = LogJoints(records, record);
    const long double highest = *std::max_element(joints.begin(), joints.end());
    long double sum = 0;
    for (const long double joint : joints) sum += std::exp(joint - highest);
    ASSERT_TRUE(algorithm.ScoreFullRecord(record, output).IsOK());
    for (int k = 0; k < 3; ++k) {
      const auto p = static_cast<double>(std::exp(joints[k] - highest) / sum);
      EXPECT_NEAR(output.GetOutProbabilities()[k], p, 1e-11 * p);
    }
    expected.Accumulate(static_cast<int>(record[0]), output.GetWinningIndex(), 1);
  }
  ASSERT_TRUE(algorithm.ComputeOutputStats(source, stats, -1).IsOK());
  EXPECT_EQ(stats.GetMisClassMatrixAsVecOfRows(), expected.GetMisClassMatrixAsVecOfRows());
}

TEST(Laws, TheOrderOfRecordsMeansNothing) {
  auto data = RandomData::Make(120, 21);
  for (Record& r : data) r[1] = std::floor(r[1] * 2);  // weights that add without rounding
  auto backwards = data;
  std::reverse(backwards.begin(), backwards.end());
  const auto describe = [](const std::vector<Record>& records) {
    NBAlgorithm algorithm(NaiveBayesSettings(), RandomData::MakeList({0, 1, 2, 3, 4, 5}));
    TestRecords source(records);
    EXPECT_TRUE(algorithm.BuildModel(source, 1000).IsOK());
    std::ostringstream os;
    os.precision(17);
    algorithm.Display(os);
    return os.str();
  };
  EXPECT_EQ(describe(data), describe(backwards));
}

TEST(Laws, UnitWeightsCountLikeNone) {
  // Without a weight variable counting takes a way of its own; large tables take another.
  for (const int categories : {3, 5000}) {
    NBVarList plain, weighted;
    for (NBVarList* list : {&plain, &weighted}) {
      list->AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
      list->AddCatVar("x", "", categories, INBVariable::kNumericCategorical, INBVariable::kInput);
    }
    weighted.AddWeightVar("w", "", INBVariable::kAsIs);
    std::vector<Record> records, weightedRecords;
    std::mt19937 random(4);
    for (int i = 0; i < 4999; ++i) {
      const double y = random() % 3, x = static_cast<int>(random() % (categories + 1)) - 1.0;
      records.push_back(Record({y, x}));
      weightedRecords.push_back(Record({y, x, 1}));
    }
    NBAlgorithm a(NaiveBayesSettings(), plain), b(NaiveBayesSettings(), weighted);
    TestRecords aSource(records), bSource(weightedRecords);
    ASSERT_TRUE(a.BuildModel(aSource, 10000).IsOK());
    ASSERT_TRUE(b.BuildModel(bSource, 10000).IsOK());
    for (int m = 0; m < categories; ++m) {
      for (int k = 0; k < 3; ++k) {
        const double count = std::count_if(records.begin(), records.end(),
                                           [&](const Record& r) { return r[0] == k && r[1] == m; });
        ASSERT_EQ(a.GetInputs()[0].GetCount(m, k), count);
        ASSERT_EQ(b.GetInputs()[0].GetCount(m, k), count);
      }
    }
  }
}

TEST(Laws, ACodeIsRoundedAndWhatIsNoneIsMissingOrOutOfRange) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const struct {
    double value;
    std::int64_t code;  // the warning or error of scoring
    int category;
  } cases[] = {{0, 0, 0},
               {-0.0, 0, 0},
               {0.49, 0, 0},
               {0.5, 0, 1},
               {1.49, 0, 1},
               {1.5, MCNaive::kCodeOutOfRange, -1},
               {2, MCNaive::kCodeOutOfRange, -1},
               {1e300, 70010, -1},
               {kHighest, 70010, -1},
               {-0.4, 70016, -1},
               {-7, 70016, -1},
               {kMissing, 70016, -1},
               {kInfinity, 70016, -1},
               {-kInfinity, 70016, -1},
               {std::nan(""), 70016, -1}};
  NBAlgorithm algorithm(NaiveBayesSettings(), MakeWideList(1));
  TestRecords source({Record({0, 0}), Record({1, 1}), Record({2, 1})});
  ASSERT_TRUE(algorithm.BuildModel(source, 3).IsOK());
  NBOutput output(3), expected(3);
  for (const auto& c : cases) {
    EXPECT_EQ(algorithm.Score(Record(std::vector<double>{c.value}), output).GetErrorCode(), c.code)
        << c.value;
    if (c.category < 0) continue;
    ASSERT_TRUE(algorithm.ScoreFullRecord(Record({0, c.category * 1.0}), expected).IsOK());
    EXPECT_EQ(output.GetOutProbabilities(), expected.GetOutProbabilities()) << c.value;
  }
}

// The winner as the rule is told, with its list of ties.
int WinnerByTheRule(const std::vector<double>& p, const std::vector<double>& counts) {
  int winner = 0;
  double best = p[0];
  std::vector<int> ties;
  for (int i = 1; i < static_cast<int>(p.size()); ++i) {
    if (p[i] > best) {
      best = p[i];
      winner = i;
      ties = {i};
    } else if (p[i] == best) {
      ties.push_back(i);
    }
  }
  double most = counts[winner];
  for (std::size_t t = 1; t < ties.size(); ++t) {
    if (counts[ties[t]] <= most) continue;
    winner = ties[t];
    most = counts[winner];
  }
  return winner;
}

TEST(Laws, TheWinnerIsTheRulesForEveryPatternOfTies) {
  for (int pattern = 0; pattern < 81 * 81; ++pattern) {
    int rest = pattern;
    std::vector<double> p, counts;
    for (int k = 0; k < 4; ++k, rest /= 3) p.push_back(rest % 3);
    NBayesOutput output;
    output.Setup(4);
    for (std::int32_t k = 0; k < 4; ++k, rest /= 3) {
      counts.push_back(rest % 3 + 1);
      output.AddCases(&k, &counts.back(), 1);
    }
    ASSERT_EQ(NBScoring::SelectWinner(p, output), WinnerByTheRule(p, counts)) << pattern;
  }
}

TEST(Laws, CategoriesWithoutValuesMergeByTheirNumbers) {
  const auto make = [](int categories, const std::vector<Record>& records) {
    NBVarList list;
    list.AddCatVar("y", "", categories, INBVariable::kStringCategorical, INBVariable::kOutput);
    list.AddCatVar("x", "", categories, INBVariable::kStringCategorical, INBVariable::kInput);
    auto algorithm = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), list);
    TestRecords source(records);
    EXPECT_TRUE(algorithm->BuildModel(source, 10).IsOK());
    return algorithm;
  };
  const auto small = make(2, {Record({0, 0}), Record({1, 1})});
  const auto large = make(5, {Record({4, 3}), Record({1, 0})});
  ASSERT_TRUE(small->MergeModel(large.get(), true).IsOK());
  EXPECT_EQ(small->GetNTargetCategories(), 5);
  EXPECT_EQ(small->GetTargetCategoryCount(4), 1);
  EXPECT_EQ(small->GetInputs()[0].GetCount(3, 4), 1);
  NBOutput output(5);
  ASSERT_TRUE(small->ScoreFullRecord(Record({0, 3}), output).IsOK());
  EXPECT_EQ(output.GetWinningIndex(), 4);
}

TEST(Laws, BinsOfARangeThatNoDoubleHoldsAreStillBins) {
  const NBBinningEncoder bins(-kHighest, kHighest, 4);
  EXPECT_THAT(bins.GetBinningCutpoints(), testing::ElementsAre(testing::DoubleEq(-kHighest / 2), 0,
                                                               testing::DoubleEq(kHighest / 2)));
  NBayesInputBase counts;
  counts.Setup(1.0, {{1}, {0}, {0}, {1}});
  EXPECT_THAT(bins.CreateRebinned(&counts)->GetBinningCutpoints(), testing::Each(0));
  const NBBinningEncoder high(kHighest / 2, kHighest, 4);
  EXPECT_EQ(high.GetBinningCutpoints()[2], kHighest / 2 + 3 * (kHighest / 8));
}

TEST(Laws, ListsRefuseWhatCannotBe) {
  NBVarList list;
  EXPECT_EQ(list.AddContVar("c", "", {2, 1}, INBVariable::kInput), -1);
  EXPECT_EQ(
      list.AddCatVar("w", "", 2, INBVariable::kNumericCategorical, INBVariable::kFrequencyWeight),
      0);
  EXPECT_EQ(list.GetWeightIndex(), -1) << "only a weight variable weighs";
  NaiveBayesSettings settings;
  settings.SetNSkippedReports(-1);
  EXPECT_EQ(settings.GetNSkippedReports(), 0);
}

}  // namespace
