#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <tuple>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/selection/MCRandom.h"
#include "naivebayes/selection/NBAttributeSelector.h"
#include "naivebayes/selection/NBFormulas.h"
#include "naivebayes/store/NBInternalAdapter.h"
#include "naivebayes/store/NBMemoryIter.h"
#include "naivebayes/store/NBTempFile.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::Reference;
using nbtest::TestRecords;

struct Outcome {
  MCNaive::MCStatus fStatus;
  std::vector<int> fvOrder;  // input positions
  std::vector<double> fvLogLikelihoods;
  std::vector<std::pair<int, double>> fvResults;
  std::unique_ptr<NBAlgorithm> fpAlgorithm;
};

struct Request {
  std::vector<int> fvForced = {};
  int fSize = -1;
  bool fbExact = false;
  std::vector<Record> fvTest = {};
  bool fbInMemory = true;
  MCQueryCancel* fpCancel = nullptr;
  std::string fTempDir = {};
  ProgressListener* fpListener = nullptr;
  int fNSkipped = 0;
  NaiveBayesSettings::RNGChoice fRNG = NaiveBayesSettings::kMersenneTwister;
  MCCommon::MCRandom* fpRNG = nullptr;
  long fNMaxInMemory = 1000000;
};

Outcome Select(const std::vector<Record>& data, const Request& request) {
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(request.fbInMemory ? request.fNMaxInMemory : 10);
  settings.SetSampleSize4SimData(200);
  settings.SetCancelPointer(request.fpCancel);
  settings.SetTempDir(request.fTempDir);
  settings.SetProgressListener(request.fpListener);
  settings.SetNSkippedReports(request.fNSkipped);
  settings.SetRNGOption(request.fRNG);
  settings.SetUserRNG(request.fpRNG);
  Outcome out;
  out.fpAlgorithm = std::make_unique<NBAlgorithm>(settings, RandomData::MakeList(request.fvForced));
  TestRecords source(data), test(request.fvTest);
  out.fStatus = out.fpAlgorithm->SelectAttributes(
      source, static_cast<int>(data.size()), out.fvOrder, out.fvLogLikelihoods, out.fvResults,
      request.fSize, request.fbExact, request.fvTest.empty() ? nullptr : &test, -1, 99, nullptr,
      nullptr);
  for (int& variable : out.fvOrder) variable -= RandomData::kFirst;
  return out;
}

std::vector<int> ChosenInputs(const NBAlgorithm& algorithm) {
  std::vector<int> chosen;
  for (const NBayesInput& input : algorithm.GetInputs()) {
    chosen.push_back(input.GetVarIndex() - RandomData::kFirst);
  }
  return chosen;
}

TEST(Selection, AgreesWithTheDefinitionForEveryRuleAndForcedSet) {
  for (unsigned seed : {1u, 2u, 3u}) {
    auto data = RandomData::Make(150, seed);
    if (seed == 3) {  // weights that are nearly all 1
      for (Record& record : data) record[RandomData::kWeight] = 1;
      data[0][RandomData::kTarget] = 0;
      data[0][RandomData::kWeight] = 2;
    }
    const auto testData = RandomData::Make(70, seed + 100);
    const Reference reference(data);
    for (const auto& forced : std::vector<std::vector<int>>{{}, {0}, {1, 5}}) {
      const int nForced = static_cast<int>(forced.size());
      const std::vector<int> order = reference.Forward(data, forced, 6);
      for (bool test : {false, true}) {
        Request request{forced};
        if (test) request.fvTest = testData;
        const Outcome out = Select(data, request);
        ASSERT_TRUE(out.fStatus.IsOK()) << out.fStatus.GetErrorCode();
        ASSERT_EQ(out.fvOrder, order);
        std::vector<std::pair<double, int>> expected;
        for (int s = std::max(nForced, 1); s <= 6; ++s) {
          const std::vector<int> subset(order.begin(), order.begin() + s);
          const double l = reference.LogLikelihood(data, subset);
          EXPECT_NEAR(out.fvLogLikelihoods[s - 1], l, 1e-12);
          const double n = reference.fN;
          expected.emplace_back(
              test ? -reference.LogLikelihood(testData, subset) : s * 0.5 * std::log(n) / n - l, s);
        }
        std::sort(expected.begin(), expected.end());
        ASSERT_EQ(out.fvResults.size(),
                  std::min<std::size_t>(expected.size(), 6 - nForced + (nForced > 0)));
        for (std::size_t r = 0; r < out.fvResults.size(); ++r) {
          EXPECT_EQ(out.fvResults[r].first, expected[r].second);
          EXPECT_NEAR(out.fvResults[r].second, expected[r].first, 1e-12);
        }
        std::vector<int> chosen(order.begin(), order.begin() + expected[0].second);
        std::sort(chosen.begin(), chosen.end());
        EXPECT_EQ(ChosenInputs(*out.fpAlgorithm), chosen);
        EXPECT_EQ(out.fpAlgorithm->GetNumberOfInputVars(), expected[0].second);
      }
      const Outcome exact = Select(data, {forced, nForced + 2, true});
      EXPECT_EQ(exact.fvOrder, std::vector<int>(order.begin(), order.begin() + nForced + 2));
      EXPECT_EQ(exact.fpAlgorithm->GetNumberOfInputVars(), nForced + 2);
      EXPECT_TRUE(exact.fvResults.empty());
      if (nForced > 0) {
        EXPECT_NEAR(exact.fvLogLikelihoods[nForced - 1], reference.LogLikelihood(data, forced),
                    1e-12);
      }
    }
  }
}

TEST(Selection, FromATemporaryFileReportsTheTrainingDataNotTheSimulatedRecords) {
  const auto data = RandomData::Make(400, 5);
  const auto testData = RandomData::Make(80, 6);
  const Reference reference(data);
  const Outcome file = Select(data, {.fvForced = {2}, .fbInMemory = false});
  ASSERT_TRUE(file.fStatus.IsOK());
  ASSERT_EQ(file.fvOrder.size(), 6u);
  for (int s = 1; s <= 6; ++s) {
    const std::vector<int> subset(file.fvOrder.begin(), file.fvOrder.begin() + s);
    EXPECT_NEAR(file.fvLogLikelihoods[s - 1], reference.LogLikelihood(data, subset), 1e-12);
  }
  // Same seed, same bits.
  const Outcome again = Select(data, {.fvForced = {2}, .fbInMemory = false});
  EXPECT_EQ(again.fvOrder, file.fvOrder);
  EXPECT_EQ(again.fvLogLikelihoods, file.fvLogLikelihoods);
  EXPECT_EQ(again.fvResults, file.fvResults);
  // Where nothing is simulated, a store makes no difference, to the bit.
  const Request forcedOnly{.fvForced = {0, 1, 2, 3, 4, 5}, .fSize = 7, .fvTest = testData};
  Request forcedOnFile = forcedOnly;
  forcedOnFile.fbInMemory = false;
  const Outcome a = Select(data, forcedOnly), b = Select(data, forcedOnFile);
  MCNaive::MCStatus reduced = MCNaive::Warning(MCNaive::kSizeReduced);
  reduced.SetDiscreteDatum(0, 7);
  reduced.SetDiscreteDatum(1, 6);
  EXPECT_EQ(a.fStatus, reduced);
  EXPECT_EQ(a.fvResults, b.fvResults);
  ASSERT_EQ(a.fvResults.size(), 1u);
  EXPECT_EQ(a.fvLogLikelihoods[5], b.fvLogLikelihoods[5]);
  reduced.SetDiscreteDatum(0, 9);
  reduced.SetDiscreteDatum(1, 1);
  reduced.SetDiscreteDatum(2, 5);
  EXPECT_EQ(Select(data, {.fvForced = {2}, .fSize = 9}).fStatus, reduced);
  const Outcome exact =
      Select(data, {.fvForced = {2}, .fSize = 3, .fbExact = true, .fbInMemory = false});
  EXPECT_EQ(exact.fvLogLikelihoods[0], file.fvLogLikelihoods[0]);
}

// One record drawn from the reference's model by inversion: the class, then a category of each
// input.
std::vector<int> Simulate(const Reference& model, MCNaiveBayes::MCRandom& random) {
  const auto invert = [&](int categories, auto probability) {
    double u = random.GetRandom();
    int category = 0;
    for (; category < categories - 1 && u > probability(category); ++category) {
      u -= probability(category);
    }
    return category;
  };
  std::vector<int> record = {invert(3, [&](int k) { return model.fvPriors[k]; })};
  for (const auto& table : model.fvP) {
    record.push_back(
        invert(static_cast<int>(table.size()), [&](int m) { return table[m][record[0]]; }));
  }
  return record;
}

// A(j) of all inputs, and behind them what the priors add.
std::vector<double> PartsOf(const Reference& model, const std::vector<Record>& data) {
  std::vector<double> parts(model.fvP.size() + 1, 0.0);
  for (const Record& r : data) {
    if (!Reference::IsValid(r)) continue;
    parts.back() += r[1] / model.fN * std::log(model.fvPriors[Reference::Class(r)]);
    for (std::size_t j = 0; j < model.fvP.size(); ++j) {
      const int m = Reference::Code(r, static_cast<int>(j));
      if (m < 0) continue;
      parts[j] += r[1] / model.fN * std::log(model.fvP[j][m][Reference::Class(r)]);
    }
  }
  return parts;
}

// The order of entry by simulated steps: of the terms A + B, B from `draws` new records each step.
// Each step's log-likelihood goes to `values`.
std::vector<int> SimulatedForward(const std::vector<Record>& data, std::vector<int> order,
                                  int draws, MCNaiveBayes::MCRandom& random,
                                  std::vector<double>* values = nullptr) {
  const Reference model(data);
  const std::vector<double> parts = PartsOf(model, data);
  while (order.size() < model.fvP.size()) {
    std::vector<double> scores(parts.begin(), parts.end() - 1);
    for (int i = 0; i < draws; ++i) {
      const std::vector<int> record = Simulate(model, random);
      for (std::size_t c = 0; c < scores.size(); ++c) {
        double sum = 0;
        for (int k = 0; k < 3; ++k) {
          double joint = model.fvPriors[k] * model.fvP[c][record[c + 1]][k];
          for (int j : order) joint *= model.fvP[j][record[j + 1]][k];
          sum += joint;
        }
        scores[c] -= std::log(sum) / draws;
      }
    }
    double before = parts.back();
    for (int j : order) before += parts[j];
    for (int j : order) scores[j] = -1e300;
    order.push_back(
        static_cast<int>(std::max_element(scores.begin(), scores.end()) - scores.begin()));
    if (values != nullptr) values->push_back(before + scores[order.back()]);
  }
  return order;
}

// A caller's generator.
class Fractions : public MCCommon::MCRandom {
 public:
  double GetRandom() override { return fLast = std::fmod(fLast + 0.6180339887498949, 1.0); }
  double fLast = 0;
};

TEST(Selection, SimulatedStepsDrawFromTheGeneratorAskedFor) {
  const unsigned seed = NaiveBayesSettings().GetRandomSeed();
  using MCNaiveBayes::MCRandom;
  Fractions fractions, same;
  MCRandom generators[] = {MCRandom(seed, true, true, nullptr),
                           MCRandom(seed, true, false, nullptr),
                           MCRandom(seed, false, false, nullptr), MCRandom(0, true, true, &same)};
  const auto data = RandomData::Make(300, 2);
  std::vector<std::vector<int>> orders;
  for (const auto choice :
       {NaiveBayesSettings::kMersenneTwister, NaiveBayesSettings::kOlderPortable,
        NaiveBayesSettings::kLibrary, NaiveBayesSettings::kUserProvided}) {
    std::srand(7);
    const Outcome out = Select(data, {.fbInMemory = false, .fRNG = choice, .fpRNG = &fractions});
    std::srand(7);
    EXPECT_EQ(out.fvOrder, SimulatedForward(data, {}, 200, generators[choice])) << choice;
    orders.push_back(out.fvOrder);
  }
  std::sort(orders.begin(), orders.end());
  EXPECT_EQ(std::unique(orders.begin(), orders.end()) - orders.begin(), 4) << "a telling example";
}

TEST(Selection, SimulatedStepsAreThoseOfTheDefinition) {
  for (unsigned seed : {5u, 6u, 7u, 8u}) {
    const auto data = RandomData::Make(300, seed);
    for (const auto& forced : std::vector<std::vector<int>>{{}, {2}, {0, 4}}) {
      MCNaiveBayes::MCRandom random(NaiveBayesSettings().GetRandomSeed(), true, true, nullptr);
      const Outcome out = Select(data, {.fvForced = forced, .fbInMemory = false});
      ASSERT_TRUE(out.fStatus.IsOK());
      std::vector<double> values;
      EXPECT_EQ(out.fvOrder, SimulatedForward(data, forced, 200, random, &values));
      const Outcome exact =
          Select(data, {.fvForced = forced, .fSize = 6, .fbExact = true, .fbInMemory = false});
      for (std::size_t s = forced.size(); s < 6; ++s) {
        EXPECT_NEAR(exact.fvLogLikelihoods[s], values[s - forced.size()], 1e-12) << s;
      }
    }
  }
}

TEST(Selection, SimulatedStepsFindTheInformativePredictors) {
  const auto data = RandomData::Make(3000, 8);
  NaiveBayesSettings::RNGChoice choices[] = {NaiveBayesSettings::kMersenneTwister,
                                             NaiveBayesSettings::kOlderPortable,
                                             NaiveBayesSettings::kLibrary};
  for (auto choice : choices) {
    NaiveBayesSettings settings;
    settings.SetRNGOption(choice);
    NBAlgorithm algorithm(settings, RandomData::MakeList());
    TestRecords source(data);
    std::vector<int> order;
    std::vector<double> logLikelihoods;
    std::vector<std::pair<int, double>> results;
    ASSERT_TRUE(algorithm
                    .SelectAttributes(source, 3000, order, logLikelihoods, results, 3, true,
                                      nullptr, 0, 0, nullptr, nullptr)
                    .IsOK());
    // Inputs 4 and 5 are the ones most closely tied to the target, input 0 not at all.
    EXPECT_THAT(order, testing::Contains(RandomData::kFirst + 4)) << choice;
    EXPECT_THAT(order, testing::Not(testing::Contains(RandomData::kFirst))) << choice;
  }
}

TEST(Selection, TheEarlierOfTwoEqualCandidatesEntersFirst) {
  auto data = RandomData::Make(100, 3);
  for (Record& r : data) r[RandomData::kFirst + 3] = r[RandomData::kFirst];
  const Outcome out = Select(data, {});
  const auto first = std::find(out.fvOrder.begin(), out.fvOrder.end(), 0);
  EXPECT_LT(first, std::find(out.fvOrder.begin(), out.fvOrder.end(), 3));
}

TEST(Selection, TheSmallerOfTwoEqualSizesIsChosen) {
  auto testData = RandomData::Make(50, 3);
  for (Record& r : testData) {
    for (int j = 0; j < RandomData::kInputs; ++j) r[RandomData::kFirst + j] = MCMV::gMissingValue;
  }
  const Outcome out = Select(RandomData::Make(100, 3), {.fvForced = {1}, .fvTest = testData});
  ASSERT_EQ(out.fvResults.size(), 6u);
  for (int s = 1; s <= 6; ++s) {
    EXPECT_EQ(out.fvResults[s - 1], std::make_pair(s, out.fvResults[0].second));
  }
  EXPECT_EQ(out.fpAlgorithm->GetNumberOfInputVars(), 1);
}

TEST(Selection, ItsSingleTermsAreThoseOfTheDefinitionAndACodeCountsFromFiftyFiveHundredthsOn) {
  const auto data = RandomData::Make(100, 3);
  const Reference reference(data);
  NBVarList list = RandomData::MakeList({0, 1, 2, 3, 4, 5});
  NaiveBayesSettings settings;
  NBAlgorithm algorithm(settings, list);
  TestRecords source(data);
  ASSERT_TRUE(algorithm.BuildModel(source, 100).IsOK());
  std::vector<NBayesInput> inputs = algorithm.GetInputs();
  NBayesOutput output = algorithm.GetOutput();
  NBCancelInfo cancel;
  const NBAttributeSelector selector(inputs, output, list, settings, cancel, reference.fN);
  for (const double code : {0.0, 0.54, 0.56, 1.0, 1.54}) {
    std::vector<double> terms;
    selector.ComputeOneTermBJ({0, 2}, {1, 4}, Record({0, 1, 1, code, code, -1, 3, 0}), terms);
    Record expected({0, 1, 1, 0, 0, -1, 3, 0});
    expected[3] = expected[4] = std::floor(code + 0.45);
    for (int c : {0, 1}) {
      double sum = 0;
      for (int k = 0; k < 3; ++k) sum += reference.Joint(expected, {0, 2, c == 0 ? 1 : 4}, k);
      EXPECT_NEAR(terms[c], std::log(sum), 1e-14) << code;
    }
  }
  const std::vector<double> parts = PartsOf(reference, data);
  MCNaiveBayes::MCRandom random(7, true, true, nullptr), same(7, true, true, nullptr);
  for (int j = 0; j < RandomData::kInputs; ++j) {
    EXPECT_NEAR(selector.ComputeAJTerm(j, reference.fN), parts[j], 1e-13) << j;
    Record drawn(1 + RandomData::kInputs);
    selector.GenerateSimulatedRecord(drawn, random);
    const std::vector<int> expected = Simulate(reference, same);
    EXPECT_EQ(drawn.GetAll(), std::vector<double>(expected.begin(), expected.end()));
  }
}

TEST(Selection, ServesProcessedRecordsOfDoublesLikeTheComponentsOwn) {
  const auto data = RandomData::Make(150, 3), testData = RandomData::Make(70, 4);
  NBAlgorithm whole(NaiveBayesSettings(), RandomData::MakeList({0, 1, 2, 3, 4, 5}));
  TestRecords source(data);
  ASSERT_TRUE(whole.BuildModel(source, 150).IsOK());
  NaiveBayesSettings settings;
  settings.SetSampleSize4SimData(200);
  NBCancelInfo cancel;
  for (const bool fromData : {true, false}) {
    for (const bool withTest : {false, true}) {
      NBVarList list = RandomData::MakeList({1});
      NBDataPreparator preparator(list, true, 150, cancel);
      ASSERT_TRUE(source.NewPass());
      NBInternalAdapter adapter(source, 150, preparator);
      MCNaive::NBMemoryIter records(preparator.GetProcessedSize(), 150);
      while (const Record* record = adapter.NextRecord()) {
        Record high = *record;
        // Still the same code, but not if it were rounded.
        for (std::size_t j = 2; j < high.Size(); ++j) high[j] += high[j] < 0 ? 0 : 0.54;
        records.AddRecord(high);
      }
      std::vector<NBayesInput> inputs = whole.GetInputs();
      NBayesOutput output = whole.GetOutput();
      NBAttributeSelector selector(inputs, output, list, settings, cancel, whole.GetTotalWeight());
      std::vector<int> order;
      NBAttributeSelector::Results results;
      TestRecords test(testData);
      const MCNaive::MCStatus status =
          withTest ? selector.SelectMaxTestData(6, records, 150, fromData, test, -1, order, results,
                                                6, &preparator)
                   : selector.SelectMaxBIC(6, records, 150, fromData, order, results, 6);
      EXPECT_TRUE(status.IsOK());
      Request request{.fvForced = {1}, .fbInMemory = fromData};
      if (withTest) request.fvTest = testData;
      const Outcome expected = Select(data, request);
      for (int& variable : order) variable -= RandomData::kFirst;
      EXPECT_EQ(order, expected.fvOrder);
      EXPECT_EQ(results, expected.fvResults);
      std::vector<double> logLikelihoods;
      EXPECT_EQ(selector.GetLoglikelihood(logLikelihoods), 6);
      EXPECT_EQ(logLikelihoods, expected.fvLogLikelihoods);
    }
  }
}

TEST(Selection, DropsUselessPredictorsAndCountsWithoutThem) {
  auto data = RandomData::Make(100, 4);
  for (Record& r : data) r[RandomData::kFirst + 1] = 2;   // constant, forced
  for (Record& r : data) r[RandomData::kFirst + 2] = -1;  // missing throughout, a candidate
  const Reference reference(data);
  for (bool inMemory : {true, false}) {
    const Outcome out = Select(data, {.fvForced = {1, 3}, .fbInMemory = inMemory});
    EXPECT_EQ(out.fStatus.GetErrorCode(), MCNaive::kPredictorDropped);
    EXPECT_TRUE(out.fStatus.IsWarning());
    EXPECT_EQ(out.fStatus.GetDiscreteDatum(0), RandomData::kFirst + 1);
    ASSERT_EQ(out.fvOrder.size(), 4u);
    EXPECT_EQ(out.fvOrder[0], 3);
    EXPECT_EQ(out.fvResults.size(), 4u);
    for (int s = 1; s <= 4; ++s) {
      const std::vector<int> subset(out.fvOrder.begin(), out.fvOrder.begin() + s);
      EXPECT_NEAR(out.fvLogLikelihoods[s - 1], reference.LogLikelihood(data, subset), 1e-12);
    }
  }
}

TEST(Selection, WithNoUsefulPredictorLeavesAModelOfThePriors) {
  auto data = RandomData::Make(50, 4);
  for (Record& r : data) {
    for (int j = 0; j < RandomData::kInputs; ++j) r[RandomData::kFirst + j] = 0;
  }
  for (bool test : {false, true}) {
    Request request;
    if (test) request.fvTest = data;
    const Outcome out = Select(data, request);
    EXPECT_TRUE(out.fStatus.IsOK());
    EXPECT_TRUE(out.fvResults.empty());
    EXPECT_TRUE(out.fpAlgorithm->IsModelBuilt());
    EXPECT_EQ(out.fpAlgorithm->GetNumberOfInputVars(), 0);
  }
}

TEST(Selection, RefusesImpossibleRequests) {
  const auto data = RandomData::Make(30, 1);
  auto noTargets = data;
  for (Record& r : noTargets) r[0] = -1;
  auto oneRecord = noTargets;
  oneRecord[3][0] = 1;
  oneRecord[3][1] = 1;
  auto highTarget = data;
  highTarget[7][0] = 3;
  highTarget[7][1] = 1;
  const struct {
    std::vector<Record> data, test;
    int size;
    std::int64_t code;
  } cases[] = {{{}, {}, -1, MCNaive::kNoSelectionData},
               {data, {}, 2, MCNaive::kSizeWithinForced},
               {data, noTargets, -1, MCNaive::kNoTestRecords},
               {noTargets, {}, -1, MCNaive::kNoRecordsFound},
               {oneRecord, {}, -1, MCNaive::kTooFewRecords},
               {highTarget, {}, -1, MCNaive::kCodeOutOfRange}};
  for (const auto& c : cases) {
    for (bool inMemory : {true, false}) {
      const Outcome out = Select(
          c.data, {.fvForced = {0, 1}, .fSize = c.size, .fvTest = c.test, .fbInMemory = inMemory});
      EXPECT_TRUE(out.fStatus.IsError());
      EXPECT_EQ(out.fStatus.GetErrorCode(), c.code);
      EXPECT_FALSE(out.fpAlgorithm->IsModelBuilt());
      NBOutput output(3);
      EXPECT_EQ(out.fpAlgorithm->Score(Record(2), output), out.fStatus) << "errors stick";
    }
  }
  for (const auto& [nRecords, nTest, code] : {std::tuple(0, 5, MCNaive::kNoRecordsToProcess),
                                              std::tuple(30, 0, MCNaive::kEmptyTestSample)}) {
    NBAlgorithm algorithm(NaiveBayesSettings(), RandomData::MakeList());
    TestRecords source(data), test(data);
    Outcome out;
    out.fStatus =
        algorithm.SelectAttributes(source, nRecords, out.fvOrder, out.fvLogLikelihoods,
                                   out.fvResults, -1, false, &test, nTest, 0, nullptr, nullptr);
    EXPECT_EQ(out.fStatus, MCNaive::Error(code));
  }
  const Outcome high = Select(highTarget, {});
  EXPECT_EQ(high.fStatus.GetDiscreteDatum(0), 7);
  EXPECT_EQ(high.fStatus.GetDiscreteDatum(1), 3);
  EXPECT_EQ(high.fStatus.GetDiscreteDatum(2), 2);
  EXPECT_EQ(high.fStatus.GetScaleDatum(0), 3.0);
}

class CancelAt : public MCQueryCancel {
 public:
  explicit CancelAt(int poll) : fLeft(poll) {}
  bool IsCancel() override { return --fLeft < 0; }
  int fLeft;
};

class TempDir {
 public:
  // A folder of its own for each test, so that tests may run side by side.
  TempDir()
      : fPath(std::filesystem::path(testing::TempDir()) /
              (std::string("nbselection-") +
               testing::UnitTest::GetInstance()->current_test_info()->name())) {
    std::filesystem::remove_all(fPath);
    std::filesystem::create_directory(fPath);
  }
  ~TempDir() { std::filesystem::remove_all(fPath); }
  bool IsEmpty() const { return std::filesystem::is_empty(fPath); }
  std::filesystem::path fPath;
};

TEST(Selection, ACancelAtAnyPollEndsItAndLeavesNoFile) {
  const TempDir dir;
  const auto data = RandomData::Make(40, 2);
  const auto testData = RandomData::Make(10, 9);
  for (bool inMemory : {true, false}) {
    int poll = 0;
    for (bool finished = false; !finished; poll += 1 + poll / 20) {
      CancelAt cancel(poll);
      const Outcome out = Select(data, {.fvTest = testData,
                                        .fbInMemory = inMemory,
                                        .fpCancel = &cancel,
                                        .fTempDir = dir.fPath.string() + "/"});
      finished = out.fStatus.IsOK();
      EXPECT_EQ(out.fpAlgorithm->IsModelBuilt(), finished);
      ASSERT_EQ(out.fStatus.GetErrorCode(), finished ? 0 : 1) << poll;
      ASSERT_TRUE(dir.IsEmpty());
    }
    EXPECT_GT(poll, 100);
  }
}

TEST(Selection, AFullDiskAndAMissingDirectoryAreStatuses) {
  const TempDir dir;
  const auto data = RandomData::Make(2000, 2);
  Request request{.fbInMemory = false, .fTempDir = dir.fPath.string() + "/"};
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit limit = before;
  limit.rlim_cur = 20000;
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &limit);
  const Outcome full = Select(data, request);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(full.fStatus, MCNaive::Error(MCNaive::kTemporaryFile));
  EXPECT_TRUE(dir.IsEmpty());
  request.fTempDir += "missing/";
  EXPECT_EQ(Select(data, request).fStatus, MCNaive::Error(MCNaive::kTemporaryFile));
  // Exactly as many records as may be held in memory need no file.
  request.fbInMemory = true;
  request.fNMaxInMemory = 2000;
  EXPECT_TRUE(Select(data, request).fStatus.IsOK());
  request.fNMaxInMemory = 1999;
  EXPECT_EQ(Select(data, request).fStatus, MCNaive::Error(MCNaive::kTemporaryFile));
}

TEST(Selection, ATemporaryFileFollowsNothingPlantedUnderItsName) {
  const TempDir dir;
  const std::string prefix = dir.fPath.string() + "/t";
  const auto victim = dir.fPath / "victim";
  std::ofstream(victim) << "precious";
  std::vector<std::string> planted;
  for (std::time_t t = std::time(nullptr); planted.size() < 5; ++t) {
    std::srand(static_cast<unsigned>(t));
    planted.push_back(prefix + "_nb" + std::to_string(std::rand()) + ".tmp");
    std::filesystem::create_symlink(victim, planted.back());
  }
  const Outcome out = Select(RandomData::Make(100, 2), {.fbInMemory = false, .fTempDir = prefix});
  EXPECT_TRUE(out.fStatus.IsOK());
  std::string content;
  std::ifstream(victim) >> content;
  EXPECT_EQ(content, "precious");
  for (const auto& name : planted) EXPECT_TRUE(std::filesystem::is_symlink(name));
}

TEST(NBTempFile, IsItsOwnersAlone) {
  const TempDir dir;
  const mode_t mask = umask(0);
  for (const std::string& prefix : {dir.fPath.string() + "/", std::string()}) {
    MCNaive::NBTempFile file;
    ASSERT_TRUE(file.Open(prefix));
    EXPECT_EQ(file.GetName().rfind(prefix.empty() ? P_tmpdir : prefix + "_nb", 0), 0u);
    EXPECT_TRUE(prefix.empty() || file.GetName().ends_with(".tmp"));
    EXPECT_FALSE(std::filesystem::exists(file.GetName()));
    std::FILE* opened = file.Release();
    struct stat info;
    EXPECT_EQ(fstat(fileno(opened), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(info.st_nlink, 0u) << "nameless";
    std::fclose(opened);
  }
  umask(mask);
}

class Listener : public ProgressListener {
 public:
  void Report(const ProgressReport& report) override {
    fvSelected.push_back(report.DiscreteMeasure("selectedPredictors"));
    fvLeft.push_back(report.DiscreteMeasure("candidatePredictors"));
    EXPECT_EQ(report.DiscreteMeasure("maxPredictors"), 6);
    EXPECT_EQ(report.DiscreteMeasure("other"), -1);
    EXPECT_GE(report.ScaleMeasure("elapsedTime"), 0);
    EXPECT_EQ(report.ScaleMeasure("other"), MCMV::gMissingValue);
  }
  std::vector<long> fvSelected, fvLeft;
};

TEST(Selection, ReportsEachStepAndNothingElse) {
  Listener listener;
  const Outcome out =
      Select(RandomData::Make(60, 2), {.fvForced = {0, 1}, .fpListener = &listener});
  EXPECT_THAT(listener.fvSelected, testing::ElementsAre(3, 4, 5, 6));
  EXPECT_THAT(listener.fvLeft, testing::ElementsAre(3, 2, 1, 0));
  Listener skipping;
  static_cast<void>(Select(RandomData::Make(60, 2),
                           {.fvForced = {0, 1}, .fpListener = &skipping, .fNSkipped = 1}));
  EXPECT_THAT(skipping.fvSelected, testing::ElementsAre(4, 6));
}

TEST(NBFormulas, SizesAndReportCountsFollowTheirRules) {
  EXPECT_EQ(NBFormulas::ComputeAutomaticSize(0, 10), 10);
  EXPECT_EQ(NBFormulas::ComputeAutomaticSize(0, 99), 20);
  EXPECT_EQ(NBFormulas::ComputeAutomaticSize(0, 150), 30);
  EXPECT_EQ(NBFormulas::ComputeAutomaticSize(0, 1000), 100);
  EXPECT_EQ(NBFormulas::ComputeAutomaticSize(5, 45), 25);
  EXPECT_EQ(NBFormulas::ComputeReportCount(0, 0, 10), 5);
  EXPECT_EQ(NBFormulas::ComputeReportCount(0, 0, 3), 3);
  EXPECT_EQ(NBFormulas::ComputeReportCount(11, 2, 10), 11);
  EXPECT_EQ(NBFormulas::ComputeReportCount(7, 2, 10), 7);
}

TEST(MCRandom, DrawsThePublishedSequences) {
  MCNaiveBayes::MCRandom twister(5489, true, true, nullptr);
  double u = 0;
  for (int i = 0; i < 10000; ++i) u = twister.GetRandom();
  EXPECT_EQ(u, (4123659995.0 + 0.5) / 4294967296.0);  // the 10,000th number the standard names
  MCNaiveBayes::MCRandom older(1, true, false, nullptr);
  EXPECT_EQ(older.GetRandom(), 397204094 / 2147483648.0);
  // 397204094^2 mod (2^31 - 1), by exact integer arithmetic.
  EXPECT_EQ(older.GetRandom(),
            static_cast<double>(397204094ull * 397204094ull % 2147483647ull) / 2147483648.0);
  MCNaiveBayes::MCRandom zero(0, true, false, nullptr);
  EXPECT_EQ(zero.GetRandom(), 0);
  EXPECT_EQ(zero.GetRandom(), 0);
  MCNaiveBayes::MCRandom library(1, false, false, nullptr);
  for (auto* random : {&twister, &older, &library}) {
    random->SetSeed(5);
    const double first = random->GetRandom();
    random->SetSeed(5);
    EXPECT_EQ(random->GetRandom(), first);
  }
}

}  // namespace
