#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <time.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <tuple>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/encoders/NBBinningEncoder.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "naivebayes/model/NBScoring.h"
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

// Records of so many inputs, each hardly tied to the target.
std::vector<Record> MakeWideRecords(int records, int inputs, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Record> made;
  for (int i = 0; i < records; ++i) {
    Record r(inputs + 1);
    r[0] = i % 3;
    for (int j = 1; j <= inputs; ++j) {
      r[j] = random() % 20 == 0 ? kMissing : random() % 100 < 49 + (i % 3 == 1) ? 1 : 0;
    }
    made.push_back(r);
  }
  return made;
}

// log of Pi(k) times the product of P(m|k) over these columns, from the counts by their definition.
std::vector<long double> LogJoints(const std::vector<Record>& training, const Record& record,
                                   const std::vector<int>& columns) {
  const long double n = training.size();
  std::vector<long double> joints;
  for (int k = 0; k < 3; ++k) {
    const auto isClass = [k](const Record& r) { return r[0] == k; };
    const auto count = std::count_if(training.begin(), training.end(), isClass);
    long double joint = std::log((count + 1 / n) / (n + 3 / n));
    for (const int j : columns) {
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

// The logarithms of the class probabilities.
std::vector<long double> LogPosteriors(const std::vector<Record>& training, const Record& record,
                                       const std::vector<int>& columns) {
  std::vector<long double> logs = LogJoints(training, record, columns);
  const long double highest = *std::max_element(logs.begin(), logs.end());
  long double sum = 0;
  for (const long double log : logs) sum += std::exp(log - highest);
  for (long double& log : logs) log -= highest + std::log(sum);
  return logs;
}

double LogLikelihood(const std::vector<Record>& training, const std::vector<Record>& records,
                     const std::vector<int>& columns) {
  long double sum = 0;
  for (const Record& r : records) {
    sum += LogPosteriors(training, r, columns)[static_cast<std::size_t>(r[0])];
  }
  return static_cast<double>(sum / records.size());
}

// Gives out its records in small blocks.
class SmallBlocks : public TestRecords {
 public:
  using TestRecords::TestRecords;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    return TestRecords::NextBlock(std::min<std::size_t>(maxCases, 17));
  }
};

constexpr int kWideForced = 600, kWideInputs = 604;

struct WideSelection {
  std::vector<int> fvOrder;
  std::vector<double> fvLogLikelihoods;
  std::vector<std::pair<int, double>> fvResults;
};

WideSelection SelectWide(TestRecords& data, TestRecords& test, bool inMemory) {
  NBVarList list = MakeWideList(kWideInputs);
  for (int j = kWideForced; j < kWideInputs; ++j) {
    list.SetVariableRole(j + 1, INBVariable::kPossibleInput);
  }
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(inMemory ? 1000 : 1);
  NBAlgorithm algorithm(settings, list);
  WideSelection out;
  EXPECT_TRUE(algorithm
                  .SelectAttributes(data, 1000, out.fvOrder, out.fvLogLikelihoods, out.fvResults,
                                    -1, false, &test, -1, 99, nullptr, nullptr)
                  .IsOK());
  return out;
}

// What scoring record by record gives, bit for bit: products that stay doubles and such that do
// not, records without a valid input or with one out of range, and every kind of invalid target.
TEST(Laws, BlocksOfAnySizeScoreAndCountLikeSingleRecords) {
  constexpr int kRecords = 300;
  for (const int inputs : {3, 900}) {
    std::vector<Record> records = MakeWideRecords(kRecords, inputs, 8);
    NBAlgorithm single(NaiveBayesSettings(), MakeWideList(inputs));
    NBAlgorithm blocks(NaiveBayesSettings(), MakeWideList(inputs));
    TestRecords training(records);
    ASSERT_FALSE(single.BuildModel(training, kRecords).IsError());
    ASSERT_FALSE(blocks.BuildModel(training, kRecords).IsError());
    for (int i = 0; i < kRecords; i += 10) {
      records[i][i % inputs + 1] = 2;  // out of range
      for (int j = 1; j <= inputs; ++j) records[i + 1][j] = kMissing;
      records[i + 2][0] = i % 20 == 0 ? kMissing : 3;  // not a target
    }
    TestRecords source(records);
    NBScoredBlock scored;
    std::size_t i = 0;
    for (std::size_t wanted = 1; source.HasMore(); wanted = wanted * 3 % 64) {
      const MCCommon::RecordBlock& block = source.NextBlock(wanted);
      std::vector<char> isTraining(block.Cases());
      for (std::size_t c = 0; c < block.Cases(); ++c) isTraining[c] = (i + c) % 3 > 0;
      ASSERT_TRUE(blocks.ScoreAndAccumBlock(block, scored, isTraining).IsOK());
      ASSERT_EQ(scored.Cases(), block.Cases());
      for (std::size_t c = 0; c < block.Cases(); ++c, ++i) {
        NBOutput output(3);
        const auto status = single.ScoreAndAccum(records[i], output, isTraining[c] != 0);
        EXPECT_EQ(scored.GetWarning(c), status.GetErrorCode()) << i;
        EXPECT_EQ(scored.GetWinners()[c], output.GetWinningIndex()) << i;
        for (int k = 0; k < 3 && output.GetWinningIndex() >= 0; ++k) {
          EXPECT_EQ(scored.GetProbabilities()[3 * c + k], output.GetOutProbabilities()[k]) << i;
        }
      }
    }
    EXPECT_EQ(i, records.size());
    for (const auto stats : {&NBAlgorithm::GetTrainOutStats, &NBAlgorithm::GetTestOutStats}) {
      ASSERT_NE((blocks.*stats)(), nullptr);
      EXPECT_EQ((blocks.*stats)()->GetMisClassMatrixAsVecOfRows(),
                (single.*stats)()->GetMisClassMatrixAsVecOfRows());
    }
    MCCommon::RecordBlock narrow;
    narrow.Reset(1, 1);
    EXPECT_EQ(blocks.ScoreBlock(narrow, scored).GetErrorCode(), MCNaive::kWrongRecordSize);
  }
  NBScoredBlock scored;
  EXPECT_EQ(NBAlgorithm(NaiveBayesSettings(), MakeWideList(1)).ScoreBlock({}, scored),
            MCNaive::Error(MCNaive::kNoPreparator));
}

TEST(Laws, WideSelectionsAgreeWithTheirLogarithmsInBlocksOfAnySize) {
  // The products of 600 inputs are below the range of a double; those of few valid ones are not.
  std::vector<std::vector<Record>> samples;
  for (const unsigned seed : {3u, 103u}) {
    samples.push_back(MakeWideRecords(60, kWideInputs, seed));
    for (int i = 0; i < 40; ++i) {
      for (int j = 9; j < kWideForced; ++j) samples.back()[i][j] = kMissing;
    }
  }
  const auto& [records, tests] = std::tie(samples[0], samples[1]);
  TestRecords data(records), test(tests), fileData(records), fileTest(tests);
  const WideSelection out = SelectWide(data, test, true);
  ASSERT_EQ(out.fvResults.size(), 5u);
  for (const auto& [size, criterion] : out.fvResults) {
    const std::vector<int> columns(out.fvOrder.begin(), out.fvOrder.begin() + size);
    EXPECT_NEAR(out.fvLogLikelihoods[size - 1], LogLikelihood(records, records, columns), 1e-11);
    EXPECT_NEAR(criterion, -LogLikelihood(records, tests, columns), 1e-11);
  }
  SmallBlocks smallData(records), smallTest(tests);
  const WideSelection small = SelectWide(smallData, smallTest, true);
  EXPECT_EQ(out.fvLogLikelihoods, small.fvLogLikelihoods);
  EXPECT_EQ(out.fvResults, small.fvResults);
  const WideSelection file = SelectWide(fileData, fileTest, false);
  EXPECT_EQ(out.fvLogLikelihoods[kWideForced - 1], file.fvLogLikelihoods[kWideForced - 1]);
}

// Minus the average of log(1 + odds) in more digits than the engine has.
double SureLogLikelihood(const std::vector<Record>& training, const std::vector<Record>& records,
                         const std::vector<int>& columns) {
  long double sum = 0;
  for (const Record& r : records) {
    const std::vector<long double> logs = LogJoints(training, r, columns);
    const auto own = static_cast<std::size_t>(r[0]);
    long double odds = 0;
    for (std::size_t k = 0; k < logs.size(); ++k) {
      if (k != own) odds += std::exp(logs[k] - logs[own]);
    }
    sum -= std::log1p(odds);
  }
  return static_cast<double>(sum / records.size());
}

// With hundreds of forced predictors the log-likelihood is that far below the rounding of its parts
// that these would leave nothing of it, or a value above zero.
TEST(Laws, ALogLikelihoodKeepsItsDigitsHoweverSureTheModelIs) {
  constexpr int kForced = 150, kInputs = 154;
  std::vector<Record> records;
  std::mt19937 random(5);
  for (int i = 0; i < 60; ++i) {
    Record r(kInputs + 1);
    r[0] = i % 3;
    for (int j = 1; j <= kInputs; ++j) r[j] = random() % 100 < 20 + i % 3 * 30u ? 1 : 0;
    records.push_back(r);
  }
  const std::vector<Record> training(records.begin(), records.begin() + 45);
  const std::vector<Record> tests(records.begin() + 45, records.end());
  for (const bool inMemory : {true, false}) {
    NBVarList list = MakeWideList(kInputs);
    for (int j = kForced; j < kInputs; ++j) {
      list.SetVariableRole(j + 1, INBVariable::kPossibleInput);
    }
    NaiveBayesSettings settings;
    settings.SetMaxRecordsInMemory(inMemory ? 1000 : 1);
    for (const bool withTest : {false, true}) {
      NBAlgorithm algorithm(settings, list);
      TestRecords data(training), test(tests);
      NBSelectionResult result;
      ASSERT_TRUE(algorithm
                      .SelectAttributes({.fData = data,
                                         .fNRecords = 1000,
                                         .fpTest = withTest ? &test : nullptr,
                                         .fNReport = 99},
                                        result)
                      .IsOK());
      std::vector<int> columns(result.fvSelected.begin(), result.fvSelected.begin() + kForced);
      for (int s = kForced; s <= kInputs; ++s) {
        if (s > kForced) columns.push_back(result.fvSelected[s - 1]);
        const double value = result.fvLogLikelihoods[s - 1];
        const double expected = SureLogLikelihood(training, training, columns);
        ASSERT_LT(expected, 0);
        if (inMemory || !withTest || s == kForced) {
          EXPECT_NEAR(value, expected, -1e-11 * expected) << s;
        }
        for (const auto& [size, criterion] : result.fvResults) {
          if (size != s || !withTest) continue;
          const double average = -SureLogLikelihood(training, tests, columns);
          EXPECT_NEAR(criterion, average, 1e-11 * average) << s;
        }
        // The step took the best of all that were left.
        for (int t = s; inMemory && s > kForced && t < kInputs; ++t) {
          std::vector<int> other(columns.begin(), columns.end() - 1);
          other.push_back(result.fvSelected[t]);
          EXPECT_LT(SureLogLikelihood(training, training, other), expected) << s;
        }
      }
    }
  }
}

TEST(Laws, ALogarithmIsTheSameHoweverItsValueIsSplit) {
  std::mt19937 random(3);
  for (const double weight : {1.0, 0.3}) {
    for (const int range : {-1, -700, -5000}) {
      NBLogSum a, b;
      long double expected = 0;
      for (int i = 0; i < 500; ++i) {
        const double x = (random() + 1) * 0x1p-32;
        const int exponent = static_cast<int>(random() % 50) + range, shift = random() % 300;
        a.Add(x, exponent, weight);
        b.Add(std::ldexp(x, shift - 250), exponent - shift + 250, weight);
        expected += weight * (std::log(static_cast<long double>(x)) +
                              exponent * std::numbers::ln2_v<long double>);
      }
      EXPECT_EQ(a.Total(), b.Total()) << range;
      EXPECT_NEAR(a.Total(), static_cast<double>(expected),
                  1e-15 * std::abs(static_cast<double>(expected)));
    }
  }
}

// Measures the processor time that goes by without a poll.
class Stopwatch : public MCQueryCancel {
 public:
  bool IsCancel() override {
    const double now = Now();
    fLongest = std::max(fLongest, now - fLast);
    fLast = now;
    return false;
  }
  static double Now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  }
  double fLast = Now();
  double fLongest = 0;
};

// However wide the records and however many the categories, a cancel is answered soon.
TEST(Laws, NoOperationGoesFarWithoutAPoll) {
  const struct {
    int fInputs;
    int fCategories;
    int fCases;
    bool fbSelects;
  } cases[] = {{1500, 3, 4096, false}, {1500, 3, 4096, true}, {12, 3000, 4000, true}};
  for (const auto& c : cases) {
    NBVarList list;
    list.AddCatVar("y", "", c.fCategories, INBVariable::kNumericCategorical, INBVariable::kOutput);
    std::vector<Record> records(c.fCases, Record(c.fInputs + 1));
    for (int j = 0; j < c.fInputs; ++j) {
      const bool isForced = !c.fbSelects || j < c.fInputs - 5;
      list.AddCatVar("x" + std::to_string(j), "", 2, INBVariable::kNumericCategorical,
                     isForced ? INBVariable::kInput : INBVariable::kPossibleInput);
      for (int i = 0; i < c.fCases; ++i) records[i][j + 1] = (i * 7 + j * 5 + i / 3 * j) % 11 < 5;
    }
    for (int i = 0; i < c.fCases; ++i) records[i][0] = i % c.fCategories;
    TestRecords source(records);
    // Seconds beyond what is allowed.
    const auto excess = [&](const auto& operation) {
      Stopwatch watch;
      NaiveBayesSettings settings;
      settings.SetMaxRecordsInMemory(c.fCases);
      NBAlgorithm algorithm(settings, list);
      NBSelectionResult result;
      if (!c.fbSelects) {
        EXPECT_FALSE(algorithm.BuildModel(source, c.fCases).IsError());
      }
      algorithm.SetCancelPtr(&watch);
      watch = Stopwatch();
      const double start = Stopwatch::Now();
      EXPECT_FALSE(operation(algorithm, result).IsError());
      return watch.fLongest - 0.01 - 0.02 * (Stopwatch::Now() - start);
    };
    // A machine that halts for others does so in one place now and in another then.
    const auto measure = [&](const char* what, const auto& operation) {
      double least = excess(operation);
      for (int more = 3; more > 0 && least > 0; --more) {
        least = std::min(least, excess(operation));
      }
      EXPECT_LE(least, 0) << what << ' ' << c.fInputs;
    };
    if (c.fbSelects) {
      measure("select", [&](NBAlgorithm& algorithm, NBSelectionResult& result) {
        static_cast<void>(source.NewPass());
        return algorithm.SelectAttributes(
            {.fData = source, .fNRecords = c.fCases, .fSize = c.fInputs - 2}, result);
      });
      continue;
    }
    measure("build", [&](NBAlgorithm& algorithm, NBSelectionResult&) {
      return algorithm.BuildModel(source, c.fCases);
    });
    measure("score", [&](NBAlgorithm& algorithm, NBSelectionResult&) {
      NBOutputStatistics stats(c.fCategories);
      return algorithm.ComputeOutputStats(source, stats, -1);
    });
  }
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

TEST(Laws, ListsKnowTheirTargetAndWeightByWhatIsInThem) {
  NBVarList list;
  list.AddCatVar("x", "", 3, INBVariable::kNumericCategorical, INBVariable::kInput);
  list.AddWeightVar("w", "", INBVariable::kAsIs);
  list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddContVar("c", "", 0, 1, 5, INBVariable::kInput);
  std::vector<std::string> inputs;
  std::string target;
  list.GetVarNames(inputs, target);
  EXPECT_THAT(inputs, testing::ElementsAre("x", "c"));
  EXPECT_EQ(target, "y");
  EXPECT_EQ(list.GetNInputCats(), 8);
  list.RemoveVar(-1);
  list.RemoveVar(4);
  list.RemoveVar("none");
  EXPECT_EQ(list.Size(), 4);
  list.RemoveVar("x");
  EXPECT_EQ(list.GetWeightIndex(), 0);
  EXPECT_EQ(list.GetTargetIndex(), 1);
  list.SetVariableRole(1, INBVariable::kInput);
  list.GetVarNames(inputs, target);
  EXPECT_EQ(target, "");
  EXPECT_EQ(list.GetNOutputCats(), 0);
  list.SetVariableRole(1, INBVariable::kOutput);
  EXPECT_EQ(list.GetTargetIndex(), 1);
  list.SetVariableRole(0, INBVariable::kFrequencyWeight);
  EXPECT_EQ(list.GetWeightIndex(), 0);
  NBVarList other, level;
  other.AddWeightVar("u", "", INBVariable::kAsIs);
  level.AddContVar("w", "", 0, 1, 5, INBVariable::kInput);
  for (NBVarList* different : {&other, &level}) {
    different->AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
    different->AddContVar("c", "", 0, 1, 5, INBVariable::kInput);
    int differing = -1;
    EXPECT_FALSE(list.CanMergeWith(*different, differing));
    EXPECT_EQ(differing, 0);
  }
  // Bins that are there stay, unless they are to be replaced.
  for (const bool replace : {false, true}) {
    list.SetupContEncoders(9, replace);
    EXPECT_EQ(list.GetVarAt(2)->GetNumberOfCategories(), replace ? 9 : 5);
  }
}

TEST(Laws, ListsRefuseWhatCannotBe) {
  NBVarList list;
  EXPECT_EQ(list.AddContVar("c", "", {2, 1}, INBVariable::kInput), -1);
  EXPECT_EQ(list.AddContVar("c", "", {1, 2}, INBVariable::kOutput), -1);
  EXPECT_EQ(list.AddContVar("c", "", 0, 1, 5, INBVariable::kOutput), -1);
  const std::vector<std::string> twice = {"a", "a"};
  EXPECT_EQ(list.AddCatVar("x", "", {1.0, 1.0}, {"a", "b"}, INBVariable::kInput), -1);
  EXPECT_EQ(list.AddCatVar("x", "", twice, INBVariable::kInput), -1);
  EXPECT_EQ(list.AddCatVar("x", "", twice, {"a", "b"}, INBVariable::kInput), -1);
  EXPECT_EQ(
      list.AddCatVar("w", "", 2, INBVariable::kNumericCategorical, INBVariable::kFrequencyWeight),
      0);
  EXPECT_EQ(list.GetWeightIndex(), -1) << "only a weight variable weighs";
  list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
  std::vector<int> constant, empty;
  for (const int bins : {0, -1}) {
    const int binless =
        list.AddContVar("bins " + std::to_string(bins), "", 0, 1, bins, INBVariable::kInput);
    EXPECT_FALSE(list.IsValidList(constant, empty, true));
    EXPECT_THAT(empty, testing::Contains(binless));
  }
  NaiveBayesSettings settings;
  settings.SetNSkippedReports(-1);
  EXPECT_EQ(settings.GetNSkippedReports(), 0);
}

}  // namespace
