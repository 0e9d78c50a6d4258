#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <random>
#include <sstream>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScaledProducts.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "naivebayes/model/NBScoring.h"
#include "naivebayes/parts/INBParts.h"
#include "naivebayes/parts/NBPartCodes.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::Reference;
using nbtest::TestRecords;

constexpr double kMissing = MCMV::gMissingValue;
const std::vector<int> kAll = {0, 1, 2, 3, 4, 5};

NBAlgorithm MakeEmpty() { return NBAlgorithm(NaiveBayesSettings(), RandomData::MakeList(kAll)); }

void ExpectSameModel(const NBAlgorithm& a, const NBAlgorithm& b) {
  ASSERT_EQ(a.GetInputs().size(), b.GetInputs().size());
  EXPECT_EQ(a.GetOutput().GetPriors(), b.GetOutput().GetPriors());
  for (std::size_t j = 0; j < a.GetInputs().size(); ++j) {
    const NBayesInput &x = a.GetInputs()[j], &y = b.GetInputs()[j];
    EXPECT_EQ(x.GetVarIndex(), y.GetVarIndex());
    for (int m = 0; m < x.GetNCategories(); ++m) {
      for (int k = 0; k < x.GetNTargetCategories(); ++k) {
        EXPECT_EQ(x.GetCount(m, k), y.GetCount(m, k));
        EXPECT_EQ(x.GetProbability(m, k), y.GetProbability(m, k));
      }
    }
  }
}

TEST(Model, EstimatesAndPosteriorsAgreeWithTheDefinition) {
  const auto data = RandomData::Make(200, 1);
  const Reference reference(data);
  NBAlgorithm algorithm = MakeEmpty();
  TestRecords source(data);
  ASSERT_TRUE(algorithm.BuildModel(source, 200).IsOK());
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(algorithm.GetOutput().GetPriors()[k], reference.fvPriors[k], 1e-15);
    for (int j = 0; j < RandomData::kInputs; ++j) {
      for (std::size_t m = 0; m < reference.fvP[j].size(); ++m) {
        EXPECT_NEAR(algorithm.GetInputs()[j].GetProbability(static_cast<int>(m), k),
                    reference.fvP[j][m][k], 1e-15);
      }
    }
  }
  NBOutputStatistics expected(3), stats(3);
  int nExcluded = 0;
  for (const Record& record : data) {
    NBOutput output(3), fromInputs(3);
    ASSERT_FALSE(algorithm.ScoreFullRecord(record, output).IsError());
    Record inputs(RandomData::kInputs);
    for (std::size_t j = 0; j < inputs.Size(); ++j) inputs[j] = record[RandomData::kFirst + j];
    ASSERT_FALSE(algorithm.Score(inputs, fromInputs).IsError());
    EXPECT_EQ(output.GetOutProbabilities(), fromInputs.GetOutProbabilities());
    Record codes(RandomData::kInputs);
    for (int j = 0; j < RandomData::kInputs; ++j) codes[j] = Reference::Code(record, j);
    std::vector<double> two;
    algorithm.ComputeOutProbabilities(codes, 2, two);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_NEAR(two[0] / two[1],
                reference.Joint(record, kAll, 0) / reference.Joint(record, kAll, 1),
                1e-13 * two[0] / two[1]);
    EXPECT_NEAR(two[0] + two[1], 1, 1e-15);
    for (int k = 0; k < 3; ++k) {
      const double joint = reference.Joint(record, kAll, k);
      EXPECT_NEAR(algorithm.ComputePXYPY(codes, k), joint, 1e-13 * joint);
      EXPECT_NEAR(output.GetOutProbabilities()[k], reference.Posterior(record, kAll, k), 1e-13);
    }
    ASSERT_FALSE(algorithm.ScoreAndAccum(record, output, true).IsError());
    nExcluded += !Reference::IsValid(record);
    if (Reference::IsValid(record)) {
      expected.Accumulate(Reference::Class(record), output.GetWinningIndex(), record[1]);
    }
  }
  EXPECT_TRUE(algorithm.ComputeOutputStats(source, stats, -1).IsOK());
  EXPECT_EQ(stats.GetMisClassMatrixAsVecOfRows(), expected.GetMisClassMatrixAsVecOfRows());
  EXPECT_EQ(algorithm.GetTrainOutStats()->GetMisClassMatrixAsVecOfRows(),
            expected.GetMisClassMatrixAsVecOfRows());
  EXPECT_EQ(stats.GetOverallError(), expected.GetOverallError());
  EXPECT_EQ(algorithm.GetTestOutStats(), nullptr);
  std::ostringstream shown;
  algorithm.GetOutput().Display(shown);
  EXPECT_THAT(shown.str(), testing::HasSubstr("categories 3\n0: "));
  EXPECT_TRUE(source.HasMore()) << "rewound";
  double validWeight, excludedWeight;
  int nValid, excluded;
  algorithm.GetNValidNExcluded(validWeight, excludedWeight, nValid, excluded);
  EXPECT_EQ(validWeight, reference.fN);
  EXPECT_EQ(nValid + excluded, 200);
  EXPECT_EQ(excluded, nExcluded);
  NBOutputStatistics few(3);
  EXPECT_TRUE(algorithm.ComputeOutputStats(source, few, 5).IsOK());
  double weightOfFive = 0;
  int n = 0;
  for (const Record& record : data) {
    if (Reference::IsValid(record) && n++ < 5) weightOfFive += record[1];
  }
  EXPECT_EQ(few.GetTotalWeight(), weightOfFive);
}

void ExpectSameNumbers(const NBAlgorithm& a, const NBAlgorithm& b) {
  double valid[2], excluded[2];
  int nValid[2], nExcluded[2];
  a.GetNValidNExcluded(valid[0], excluded[0], nValid[0], nExcluded[0]);
  b.GetNValidNExcluded(valid[1], excluded[1], nValid[1], nExcluded[1]);
  EXPECT_EQ(valid[0], valid[1]);
  EXPECT_EQ(excluded[0], excluded[1]);
  EXPECT_EQ(nValid[0], nValid[1]);
  EXPECT_EQ(nExcluded[0], nExcluded[1]);
}

TEST(Model, SeveralBatchesGiveTheModelOfOne) {
  auto data = RandomData::Make(300, 7);
  // The first batches leave bins empty, which the later ones need.
  for (int i = 0; i < 200; ++i) data[i][RandomData::kFirst + 5] = i % 3 * 2;
  NBAlgorithm one = MakeEmpty(), several = MakeEmpty();
  TestRecords source(data), batches(data);
  ASSERT_TRUE(one.Update(source, 1000).IsOK());
  // Limits count accepted records; the stream goes on where the batch before stopped.
  while (batches.HasMore()) ASSERT_TRUE(several.Update(batches, 70).IsOK());
  ExpectSameModel(one, several);
  ExpectSameNumbers(one, several);
}

TEST(Model, CountsWhatIsLeftOutToTheEndOfTheData) {
  // Three valid records; without a target, without a weight, and of no class at all behind them.
  const Record left[] = {Record({kMissing, 2, 1}), Record({0, 0, 1}), Record({7, 1, 1})};
  std::vector<Record> records = {Record({0, 1, 0}), Record({1, 2, 1}), Record({1, 3, 0})};
  records.insert(records.end(), std::begin(left), std::end(left));
  enum { kBuild, kSelect, kSelectFromFile, kUpdate };
  for (const int way : {kBuild, kSelect, kSelectFromFile, kUpdate}) {
    NBVarList list;
    list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
    list.AddWeightVar("w", "", INBVariable::kAsIs);
    list.AddCatVar(
        "x", "", 2, INBVariable::kNumericCategorical,
        way == kBuild || way == kUpdate ? INBVariable::kInput : INBVariable::kPossibleInput);
    NaiveBayesSettings settings;
    settings.SetMaxRecordsInMemory(way == kSelectFromFile ? 1 : 100);
    NBAlgorithm algorithm(settings, list);
    TestRecords source(records);
    NBSelectionResult result;
    const MCNaive::MCStatus status =
        way == kBuild    ? algorithm.BuildModel(source, 3)
        : way == kUpdate ? algorithm.Update(source, 3)
                         : algorithm.SelectAttributes({.fData = source, .fNRecords = 3}, result);
    ASSERT_TRUE(status.IsOK()) << way << ' ' << status.GetErrorCode();
    double valid, excluded;
    int nValid, nExcluded;
    algorithm.GetNValidNExcluded(valid, excluded, nValid, nExcluded);
    EXPECT_EQ(nValid, 3);
    EXPECT_EQ(nExcluded, way == kUpdate ? 0 : 2) << way;
    EXPECT_EQ(excluded, way == kUpdate ? 0 : 2) << way;
    EXPECT_EQ(algorithm.GetTargetCategoryCount(1), 5);
    EXPECT_EQ(algorithm.GetTargetCategoryRecords(0), 1);
    EXPECT_EQ(algorithm.GetTargetCategoryRecords(1), 2);
  }
}

TEST(Model, MergedModelsAreTheModelOfAllRecords) {
  // The first two leave other bins empty.
  auto low = RandomData::Make(150, 4), high = RandomData::Make(150, 5);
  for (Record& r : low) r[7] = r[7] > 5 ? 5 : r[7];
  for (Record& r : high) r[7] = r[7] < 5 ? 5.5 : r[7];
  const auto more = RandomData::Make(50, 6);
  auto all = low;
  all.insert(all.end(), high.begin(), high.end());
  all.insert(all.end(), more.begin(), more.end());
  NBAlgorithm a = MakeEmpty(), b = MakeEmpty(), c = MakeEmpty(), whole = MakeEmpty();
  TestRecords lowSource(low), highSource(high), moreSource(more), allSource(all);
  ASSERT_TRUE(a.BuildModel(lowSource, 1000).IsOK());
  ASSERT_TRUE(b.BuildModel(highSource, 1000).IsOK());
  ASSERT_TRUE(c.BuildModel(moreSource, 1000).IsOK());
  ASSERT_TRUE(whole.BuildModel(allSource, 1000).IsOK());
  const std::vector<double> priors = a.GetOutput().GetPriors();
  ASSERT_TRUE(a.MergeModel(&b, false).IsOK());
  EXPECT_EQ(a.GetOutput().GetPriors(), priors) << "only counts so far";
  ASSERT_TRUE(a.MergeModel(&c, true).IsOK());
  ExpectSameModel(a, whole);
  ExpectSameNumbers(a, whole);
  NBOutputStatistics merged(3), expected(3);
  ASSERT_TRUE(a.ComputeOutputStats(allSource, merged, -1).IsOK());
  ASSERT_TRUE(whole.ComputeOutputStats(allSource, expected, -1).IsOK());
  EXPECT_EQ(merged.GetMisClassMatrixAsVecOfRows(), expected.GetMisClassMatrixAsVecOfRows());
  NBAlgorithm other(NaiveBayesSettings(), RandomData::MakeList({0, 1}));
  ASSERT_TRUE(other.BuildModel(allSource, 1000).IsOK());
  NBAlgorithm unbuilt = MakeEmpty();
  for (const INBAlgorithm* none :
       std::initializer_list<const INBAlgorithm*>{&other, &unbuilt, nullptr, &a}) {
    EXPECT_EQ(a.MergeModel(none, true).GetErrorCode(), MCNaive::kModelsDiffer);
  }
  EXPECT_TRUE(a.GetStatus().IsOK());
}

TEST(Model, MergingMatchesCategoriesByTheirValues) {
  const auto make = [](const std::vector<double>& target, const std::vector<std::string>& input,
                       const std::vector<Record>& records) {
    NBVarList list;
    const std::vector<std::string> labels = {"first of " + input[0], ""};
    list.AddCatVar("y", "", target, labels, INBVariable::kOutput);
    list.AddCatVar("x", "", input, INBVariable::kInput);
    // Categories that were counted are categories, whatever is declared missing here.
    if (input[0] == "p") list.AddDiscreteUserMissing(1, "r", "");
    auto algorithm = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), list);
    TestRecords source(records);
    EXPECT_TRUE(algorithm->BuildModel(source, 100).IsOK());
    return algorithm;
  };
  const auto a = make({10, 20}, {"p", "q"}, {Record({0, 0}), Record({1, 1}), Record({1, 0})});
  const auto b = make({20, 30}, {"r", "p"}, {Record({0, 0}), Record({1, 1})});
  NBOutput output(3);
  EXPECT_TRUE(a->ScoreAndAccum(Record({1, 1}), output, true).IsOK());
  ASSERT_TRUE(a->MergeModel(b.get(), true).IsOK());
  // What was classified before stays where it was, and there is room for the new category.
  EXPECT_TRUE(a->ScoreAndAccum(Record({2, 2}), output, true).IsOK());  // "r" was with 20 alone
  EXPECT_EQ(a->GetTrainOutStats()->GetNCategories(), 3);
  EXPECT_EQ(a->GetTrainOutStats()->GetMisClassElement(1, 1), 1);
  EXPECT_EQ(a->GetTrainOutStats()->GetMisClassRow(2), (std::vector<double>{0, 1, 0}));
  EXPECT_EQ(a->GetNTargetCategories(), 3);
  EXPECT_EQ(a->GetTargetCategoryCount(1), 3);  // 20: two here, one there
  // Labels come with their values: 20 and 30 had none here.
  EXPECT_EQ(a->GetVarList().GetEncoderAt(0)->GetValueLabels(),
            (std::vector<std::string>{"first of p", "first of r", ""}));
  EXPECT_TRUE(a->GetVarList().GetEncoderAt(1)->GetValueLabels().empty());
  const NBayesInput& x = a->GetInputs()[0];
  ASSERT_EQ(x.GetNCategories(), 3);
  EXPECT_EQ(x.GetCount(2, 1), 1);  // "r" with 20
  EXPECT_EQ(x.GetCount(0, 2), 1);  // "p" with 30
  EXPECT_TRUE(a->ScoreFullRecord(Record({0, 2}), output).IsOK());
  EXPECT_EQ(output.GetWinningIndex(), 1);
}

// Until the estimates are computed anew, all scores are those of before the merge.
TEST(Model, AMergeOfCountsAloneKeepsTheEstimates) {
  const auto make = [](const std::vector<double>& target, const std::vector<double>& input,
                       const std::vector<Record>& records) {
    NBVarList list;
    list.AddCatVar("y", "", target, INBVariable::kOutput);
    list.AddCatVar("x", "", input, INBVariable::kInput);
    list.AddContVar("c", "", 0, 4, 4, INBVariable::kInput);
    auto algorithm = std::make_unique<NBAlgorithm>(NaiveBayesSettings(), list);
    TestRecords source(records);
    EXPECT_TRUE(algorithm->BuildModel(source, 100).IsOK());
    return algorithm;
  };
  const std::vector<Record> records = {Record({0, 0, 0.5}), Record({1, 1, 3.5}),
                                       Record({1, 0, 3.5})};
  const auto a = make({10, 20}, {1, 2}, records), before = make({10, 20}, {1, 2}, records);
  // A new category of both, and a bin that was empty.
  const auto b = make({30, 20}, {3, 2}, {Record({0, 0, 1.5}), Record({1, 1, 3.5})});
  ASSERT_TRUE(a->MergeModel(b.get(), false).IsOK());
  EXPECT_EQ(a->GetTargetCategoryCount(2), 1);
  EXPECT_EQ(a->GetTargetCategoryRecords(1), 3);
  NBOutput output(3), expected(2);
  for (const double x : {0.0, 1.0, kMissing}) {
    for (const double c : {0.5, 1.5, 3.5}) {
      ASSERT_TRUE(a->ScoreFullRecord(Record({0, x, c}), output).IsOK());
      ASSERT_TRUE(before->ScoreFullRecord(Record({0, x, c}), expected).IsOK());
      std::vector<double> probabilities = expected.GetOutProbabilities();
      probabilities.push_back(0);
      EXPECT_EQ(output.GetOutProbabilities(), probabilities) << x << ' ' << c;
    }
  }
  ASSERT_TRUE(a->ScoreFullRecord(Record({0, 2, 0.5}), output).IsOK()) << "new, and so missing";
  ASSERT_TRUE(before->ScoreFullRecord(Record({0, kMissing, 0.5}), expected).IsOK());
  EXPECT_EQ(output.GetOutProbabilities()[0], expected.GetOutProbabilities()[0]);
}

TEST(Model, ValuesOfEmptyBinsScoreLikeTheirNeighbours) {
  for (const bool select : {false, true}) {
    NBVarList list;
    list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
    list.AddContVar("c", "", 0, 10, 5, select ? INBVariable::kPossibleInput : INBVariable::kInput);
    list.AddContVar("one", "", 0, 1, 1, INBVariable::kInput);
    NBAlgorithm algorithm(NaiveBayesSettings(), list);
    TestRecords source({Record({0, 3, 0.5}), Record({1, 7, kMissing}), Record({1, 8, 0.5})});
    std::vector<int> order;
    std::vector<double> logs;
    std::vector<std::pair<int, double>> results;
    const MCNaive::MCStatus status =
        select ? algorithm.SelectAttributes(source, 3, order, logs, results, 2, true, nullptr, 0, 0,
                                            nullptr, nullptr)
               : algorithm.BuildModel(source, 3);
    // An encoder of one bin answers 1, which is no category of its variable.
    EXPECT_TRUE(status.IsWarning());
    ASSERT_EQ(algorithm.GetNumberOfInputVars(), 1);
    NBOutput lower(2), upper(2), output(2);
    EXPECT_TRUE(algorithm.Score(Record(std::vector<double>{3}), lower).IsOK());
    EXPECT_TRUE(algorithm.Score(Record(std::vector<double>{7}), upper).IsOK());
    EXPECT_NE(lower.GetOutProbabilities(), upper.GetOutProbabilities());
    for (const double value : {-5.0, 1.0, 4.5, 5.0, 5.1, 9.0, 50.0}) {
      EXPECT_TRUE(algorithm.Score(Record(std::vector<double>{value}), output).IsOK());
      EXPECT_EQ(output.GetOutProbabilities(), (value <= 5 ? lower : upper).GetOutProbabilities());
    }
    // Another training starts from the bins of the set-up.
    TestRecords other({Record({0, 1, 0.5}), Record({1, 3, 0.5}), Record({1, 9, 0.5})});
    ASSERT_FALSE(algorithm.BuildModel(other, 3).IsError());
    ASSERT_EQ(algorithm.GetNumberOfInputVars(), 1);
    EXPECT_EQ(algorithm.GetInputs()[0].GetCount(0, 0), 1);
    EXPECT_EQ(algorithm.GetInputs()[0].GetCount(4, 1), 1);
  }
}

// Cancels at its third report.
class Listener : public ProgressListener, public MCQueryCancel {
 public:
  void Report(const ProgressReport& report) override {
    fvRecords.push_back(report.DiscreteMeasure("trainRecords"));
    EXPECT_EQ(report.DiscreteMeasure("other"), -1);
    EXPECT_GE(report.ScaleMeasure("elapsedTime"), 0);
    EXPECT_EQ(report.ScaleMeasure("other"), kMissing);
  }
  bool IsCancel() override { return fvRecords.size() >= 3; }
  std::vector<long> fvRecords;
};

TEST(Model, ReportsProgressUntilItIsCancelled) {
  Listener listener;
  NBAlgorithm algorithm = MakeEmpty();
  algorithm.SetProgressListener(&listener);
  TestRecords source(RandomData::Make(10, 1));
  ASSERT_FALSE(algorithm.BuildModel(source, 2).IsError());
  EXPECT_THAT(listener.fvRecords, testing::ElementsAre(1, 2));
  NaiveBayesSettings settings;
  settings.SetNSkippedReports(9);
  settings.SetProgressListener(&listener);
  settings.SetCancelPointer(&listener);
  NBAlgorithm cancelled(settings, RandomData::MakeList(kAll));
  listener.fvRecords.clear();
  TestRecords many(RandomData::Make(100, 1));
  EXPECT_EQ(cancelled.BuildModel(many, 100), MCNaive::Error(MCNaive::kCancelled));
  EXPECT_FALSE(cancelled.IsModelBuilt());
  EXPECT_THAT(listener.fvRecords, testing::ElementsAre(10, 20, 30));
}

// What leaves the component as it is leaves no cancel behind, either.
TEST(Model, ACancelOfAQueryEndsWithTheQuery) {
  class Probe : public MCQueryCancel {
   public:
    bool IsCancel() override { return fbAnswer; }
    bool fbAnswer = false;
  } probe;
  NaiveBayesSettings settings;
  settings.SetCancelPointer(&probe);
  NBAlgorithm algorithm(settings, RandomData::MakeList(kAll));
  TestRecords source(RandomData::Make(50, 1));
  ASSERT_TRUE(algorithm.BuildModel(source, 50).IsOK());
  NBOutputStatistics stats(3);
  std::ostringstream os;
  std::fstream none;
  probe.fbAnswer = true;
  EXPECT_EQ(algorithm.ComputeOutputStats(source, stats, -1), MCNaive::Error(MCNaive::kCancelled));
  EXPECT_EQ(algorithm.ExportModelXML(os, nullptr), MCNaive::Error(MCNaive::kCancelled));
  EXPECT_EQ(algorithm.SaveState(none), MCNaive::Error(MCNaive::kCancelled));
  probe.fbAnswer = false;
  EXPECT_TRUE(algorithm.ComputeOutputStats(source, stats, -1).IsOK());
  EXPECT_TRUE(algorithm.Update(source, 50).IsOK());
  algorithm.Cancel();
  EXPECT_EQ(algorithm.ComputeOutputStats(source, stats, -1), MCNaive::Error(MCNaive::kCancelled));
  EXPECT_EQ(algorithm.ComputeOutputStats(source, stats, -1), MCNaive::Error(MCNaive::kCancelled));
}

TEST(Model, EachOperationSaysWhyItCannotBeDone) {
  class OnePass : public TestRecords {
   public:
    using TestRecords::TestRecords;
    bool NewPass() override { return false; }
  };
  const auto data = RandomData::Make(50, 1);
  TestRecords source(data);
  NBOutputStatistics stats(3);
  NBOutput output(3);
  NBScoredBlock scored;
  MCCommon::RecordBlock narrow;
  narrow.Reset(1, 1);
  narrow.SetColumn(0, &data[0].GetAll()[0]);
  const auto error = [](MCNaive::StatusCode code) { return MCNaive::Error(code); };
  NBAlgorithm empty = MakeEmpty(), model = MakeEmpty(), same = MakeEmpty();
  EXPECT_EQ(empty.ComputeOutputStats(source, stats, -1), error(MCNaive::kNoPreparator));
  ASSERT_TRUE(model.BuildModel(source, 50).IsOK());
  ASSERT_TRUE(same.BuildModel(source, 50).IsOK());
  EXPECT_EQ(model.ComputeOutputStats(source, stats, 0), error(MCNaive::kNoRecordsToProcess));
  EXPECT_EQ(model.ScoreBlock(narrow, scored), error(MCNaive::kWrongRecordSize));
  EXPECT_EQ(model.ScoreAndAccumBlock(narrow, scored, {1}), error(MCNaive::kWrongRecordSize));
  TestRecords shorter({Record(1), Record(1)}), failing(data);
  failing.fFailAt = 7;
  OnePass once(data);
  EXPECT_EQ(model.ComputeOutputStats(shorter, stats, -1), error(MCNaive::kWrongRecordSize));
  EXPECT_EQ(model.ComputeOutputStats(failing, stats, -1), error(MCNaive::kSourceFailed));
  EXPECT_EQ(model.ComputeOutputStats(once, stats, -1), error(MCNaive::kSourceFailed));
  EXPECT_EQ(empty.MergeModel(&model, true).GetErrorCode(), MCNaive::kModelsDiffer);
  ASSERT_TRUE(model.MergeModel(&same, true).IsOK());
  // What has failed stays so.
  OnePass oneMore(data);
  EXPECT_EQ(model.BuildModel(oneMore, 50), error(MCNaive::kSourceFailed));
  EXPECT_EQ(empty.BuildModel(source, 0), error(MCNaive::kNoRecordsToProcess));
  const auto failed = error(MCNaive::kSourceFailed);
  EXPECT_EQ(model.BuildModel(source, 50), failed);
  EXPECT_EQ(model.Update(source, 50), failed);
  EXPECT_EQ(model.MergeModel(&same, true), failed);
  EXPECT_EQ(model.ScoreFullRecord(data[0], output), failed);
  EXPECT_EQ(model.ScoreBlock(narrow, scored), failed);
  EXPECT_EQ(model.ComputeOutputStats(source, stats, -1), failed);
}

TEST(Model, TiesGoToTheLargerCountButNeverBeforeTheSecondTie) {
  const struct {
    std::vector<double> probabilities, counts;
    int winner;
  } cases[] = {{{0.2, 0.5, 0.5, 0.5}, {1, 3, 9, 4}, 2}, {{0.5, 0.5}, {1, 9}, 0},
               {{0.4, 0.4, 0.4}, {1, 9, 5}, 2},         {{0.4, 0.4, 0.4}, {5, 9, 5}, 0},
               {{0.1, 0.4, 0.4}, {5, 3, 3}, 1},         {{1.0}, {1}, 0}};
  for (const auto& c : cases) {
    NBayesOutput output;
    output.Setup(static_cast<int>(c.counts.size()));
    for (std::size_t k = 0; k < c.counts.size(); ++k) {
      const auto target = static_cast<std::int32_t>(k);
      output.AddCases(&target, &c.counts[k], 1);
    }
    EXPECT_EQ(NBScoring::SelectWinner(c.probabilities, output), c.winner);
  }
}

TEST(Model, AnInputNeverSeenHasProbabilitiesOneOverN) {
  NBayesInputBase input;
  input.Setup(3, 2);
  EXPECT_EQ(input.ComputeProbabilities(0.25), 0);
  EXPECT_EQ(input.GetProbability(2, 1), 0.25);
  input.Setup(0.5, {{3, 1}, {}, {1}});  // short rows are filled, empty ones do not smooth
  EXPECT_EQ(input.GetNNonEmpty(), 2);
  EXPECT_DOUBLE_EQ(input.GetProbability(0, 0), 3.5 / 5);
  EXPECT_DOUBLE_EQ(input.GetProbability(1, 0), 0.5 / 5);
  EXPECT_DOUBLE_EQ(input.GetProbability(2, 1), 0.5 / 2);
  input.Setup(3, 2);
  EXPECT_EQ(input.GetNNonEmpty(), 0);
  std::vector<double> nothing = {0, 0};  // by weights beyond all measure
  NBScoring::Normalize(nothing);
  EXPECT_EQ(nothing, std::vector<double>(2, 0.0));
}

// The counts of all cases as those of one part.
struct OnePart : INBParts {
  bool Count(NBPartCounts& counts) override {
    counts = fCounts;
    return true;
  }
  bool Ask(const NBPartQuestion&, NBPartSums&) override { return false; }
  NBPartCounts fCounts;
};

// Of weights in the first column, too; and counted as a part as often as one likes.
TEST(Model, TheWeightMayStandAnywhere) {
  const auto data = RandomData::Make(200, 9);
  NBAlgorithm usual = MakeEmpty(), usualPart = MakeEmpty();
  TestRecords source(data);
  ASSERT_TRUE(usual.BuildModel(source, 200).IsOK());
  ASSERT_TRUE(source.NewPass());
  OnePart all;
  std::unique_ptr<NBPartCodes> usualCodes, codes;
  ASSERT_FALSE(
      usualPart.CountPart({.fData = source, .fNRecords = 200}, all.fCounts, usualCodes).IsError());
  auto swapped = data;
  for (Record& r : swapped) std::swap(r[0], r[1]);
  NBVarList list;
  list.AddWeightVar("w", "", INBVariable::kAsIs);
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  for (int cats : {2, 3, 4, 2, 5}) {
    list.AddCatVar("x" + std::to_string(list.Size()), "", cats, INBVariable::kNumericCategorical,
                   INBVariable::kInput);
  }
  list.AddContVar("c", "", 0, 10, 5, INBVariable::kInput);
  TestRecords other(swapped);
  NBAlgorithm algorithm(NaiveBayesSettings(), list), part(NaiveBayesSettings(), list);
  ASSERT_TRUE(algorithm.BuildModel(other, 200).IsOK());
  ExpectSameModel(algorithm, usual);
  for (const bool kept : {false, true, false}) {
    ASSERT_TRUE(other.NewPass());
    NBPartCounts counts;
    ASSERT_FALSE(part.CountPart({.fData = other, .fNRecords = 200, .fbKept = kept}, counts, codes)
                     .IsError());
    EXPECT_EQ(counts.fWeight, usual.GetTotalWeight());
    for (int k = 0; k < 3; ++k) EXPECT_EQ(counts.fTarget[k], usual.GetTargetCategoryCount(k));
    EXPECT_TRUE(!kept || codes->Bytes() == usualCodes->Bytes());
  }
  for (int times = 0; times < 2; ++times) {
    ASSERT_TRUE(algorithm.BuildModelInParts(all).IsOK());
    ExpectSameModel(algorithm, usual);
  }
}

TEST(Model, ACaseWithoutValidInputTrainsThePriorsAndScoresToThem) {
  NBVarList list;
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddCatVar("x", "", 2, INBVariable::kNumericCategorical, INBVariable::kInput);
  NBAlgorithm algorithm(NaiveBayesSettings(), list);
  TestRecords source(
      {Record({0, 0}), Record({1, 1}), Record({1, kMissing}), Record({kMissing, 1})});
  ASSERT_TRUE(algorithm.BuildModel(source, 10).IsOK());
  EXPECT_EQ(algorithm.GetTargetCategoryCount(1), 2);
  const double n = 3, all = n + 3 / n;  // three target categories share one by N, two have counts
  EXPECT_NEAR(algorithm.GetOutput().GetPriors()[2], (1 / n) / (n + 2 / n), 1e-16);
  NBOutput output(3);
  for (double missing : {kMissing, -1.0, std::nan("")}) {
    EXPECT_EQ(algorithm.ScoreAndAccum(Record({1, missing}), output, false),
              MCNaive::Warning(MCNaive::kAllInputsMissing));
    EXPECT_NEAR(output.GetOutProbabilities()[1], (2 + 1 / n) / all, 1e-15);
    EXPECT_NEAR(output.GetOutProbabilities()[2], (1 / n) / all, 1e-15);
    EXPECT_EQ(output.GetWinningIndex(), 1);
  }
  EXPECT_TRUE(algorithm.ScoreAndAccum(Record({kMissing, 1}), output, false).IsOK());
  EXPECT_EQ(algorithm.GetTestOutStats()->GetTotalWeight(), 3);
  NBOutput untouched(3);
  const MCNaive::MCStatus high = algorithm.ScoreFullRecord(Record({1, 2}), untouched);
  EXPECT_TRUE(high.IsWarning());
  EXPECT_EQ(high.GetErrorCode(), MCNaive::kCodeOutOfRange);
  EXPECT_EQ(untouched.GetWinningIndex(), -1);
  EXPECT_EQ(algorithm.Score(Record(2), output).GetErrorCode(), MCNaive::kWrongRecordSize);
  EXPECT_EQ(algorithm.ScoreFullRecord(Record(1), output).GetErrorCode(), MCNaive::kWrongRecordSize);
}

TEST(Model, ScoresTenThousandInputsAndLeavesFewInputsAsTheyAre) {
  // Input j favours class 0 in the first half and class 1 in the second, by factors far beyond the
  // range of a double; what is left in the end is the prior.
  constexpr int kInputs = 10000;
  NBayesInputBase first, second;
  first.Setup(1e-6, {{1000, 10}, {10, 1000}});
  second.Setup(1e-6, {{10, 1000}, {1000, 10}});
  NBScaledProducts products;
  products.Reset({0.25, 0.75}, 2);
  const std::int32_t codes[] = {0, 1}, halfMissing[] = {0, -1};
  for (int j = 0; j < kInputs / 2; ++j) products.Multiply(first, codes);
  products.Align();
  std::vector<double> p(2);
  NBScoring::Normalize(products, 0, p);
  EXPECT_EQ(p[0], 1);
  NBScoring::Normalize(products, 1, p);
  EXPECT_EQ(p[1], 1);
  for (int j = 0; j < kInputs / 2; ++j) products.Multiply(second, codes);
  products.Align();
  for (std::size_t i : {0u, 1u}) {
    NBScoring::Normalize(products, i, p);
    EXPECT_NEAR(p[0], 0.25, 1e-10);
    const double log2Value = std::log2(products.SumOf(i)) + products.Exponent(i);
    const double expected =
        kInputs / 2.0 *
        (std::log2(first.GetProbability(0, 0)) + std::log2(first.GetProbability(1, 0)));
    EXPECT_NEAR(log2Value, expected, 1e-8);
  }
  products.Reset({0.25, 0.75}, 2);
  double plain[] = {0.25, 0.75};
  for (int j = 0; j < 10; ++j) {
    products.Multiply(first, halfMissing);
    for (int k = 0; k < 2; ++k) plain[k] *= first.GetProbability(0, k);
  }
  products.Align();
  EXPECT_EQ(products.Exponent(0), 0);
  for (int k = 0; k < 2; ++k) EXPECT_EQ(products.Values(0)[k], plain[k]);
  EXPECT_EQ(products.Values(1)[0], 0.25);
}

// Also where products become too small between two of the inputs, and have to be scaled.
TEST(Model, MultipliesSeveralInputsAtOnceIntoTheBitsOfOneByOne) {
  std::mt19937 random(7);
  for (const std::size_t classes : {2, 3, 5}) {
    for (const double alpha : {1e-3, 1e-40, 1e-170}) {
      std::vector<NBayesInput> inputs(11);
      for (NBayesInput& input : inputs) {
        std::vector<std::vector<double>> counts(3, std::vector<double>(classes));
        for (auto& row : counts) {
          for (double& count : row) count = random() % 3 * 10.0;
        }
        input.Setup(alpha, counts);
      }
      std::vector<std::int32_t> codes(inputs.size() * 4);
      for (std::int32_t& code : codes) code = static_cast<std::int32_t>(random() % 4) - 1;
      NBScaledProducts together, single;
      const std::vector<double> priors(classes, 1.0 / static_cast<double>(classes));
      together.Reset(priors, 4), single.Reset(priors, 4);
      together.Multiply(inputs, codes.data());
      for (std::size_t j = 0; j < inputs.size(); ++j) single.Multiply(inputs[j], &codes[j * 4]);
      together.Align(), single.Align();
      for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(together.Exponent(i), single.Exponent(i));
        for (std::size_t k = 0; k < classes; ++k) {
          EXPECT_EQ(together.Values(i)[k], single.Values(i)[k]);
        }
      }
    }
  }
}

TEST(Model, ReportsWhatItsCallersDataLack) {
  TestRecords none({}), one({Record({1, 1, 0, 0, 0, 0, 0, 1})}), good(RandomData::Make(50, 1));
  TestRecords broken(RandomData::Make(50, 1));
  broken.fFailAt = 20;
  TestRecords narrow({Record(3), Record(3)});
  const struct {
    TestRecords* source;
    int nRecords;
    std::int64_t code;
  } cases[] = {{&none, 10, MCNaive::kNoRecordsFound},
               {&one, 10, MCNaive::kTooFewRecords},
               {&good, 0, MCNaive::kNoRecordsToProcess},
               {&broken, 50, MCNaive::kSourceFailed},
               {&narrow, 10, MCNaive::kWrongRecordSize}};
  for (const auto& c : cases) {
    NBAlgorithm algorithm = MakeEmpty();
    EXPECT_EQ(algorithm.BuildModel(*c.source, c.nRecords),
              MCNaive::Error(static_cast<MCNaive::StatusCode>(c.code)));
    EXPECT_FALSE(algorithm.IsModelBuilt());
    EXPECT_EQ(algorithm.BuildModel(good, 50), algorithm.GetStatus()) << "errors stick";
  }
  NBOutput output(3);
  EXPECT_EQ(MakeEmpty().Score(Record(6), output).GetErrorCode(), MCNaive::kNoPreparator);
  NBAlgorithm cancelled = MakeEmpty();
  cancelled.Cancel();
  EXPECT_EQ(cancelled.BuildModel(good, 50).GetErrorCode(), MCNaive::kCancelled);
}

}  // namespace
