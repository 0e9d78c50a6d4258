// Cross-validation beside its definition: each fold's selection made anew on the other cases alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>

#include "common/evaluation/EvaluationCounter.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBLoops.h"
#include "naivebayes/store/NBCodeBuffer.h"
#include "naivebayes/validation/NBCrossValidation.h"
#include "naivebayes/validation/NBFoldModel.h"
#include "naivebayes/validation/NBFolds.h"
#include "tests/InstructionSets.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::TestRecords;

struct Trial {
  int fClasses;
  bool fbWeighted;
  std::vector<int> fvForced{};
  int fSize = -1;
  bool fbExact = false;
  double fStrength = 1.0;  // of the inputs that say something
  int fThreads = 1;
};

constexpr int kInputs = 14;
constexpr int kFirst = 2;

NBVarList MakeList(const Trial& trial) {
  NBVarList list;
  list.AddCatVar("y", "", trial.fClasses, INBVariable::kNumericCategorical, INBVariable::kOutput);
  if (trial.fbWeighted) {
    list.AddWeightVar("w", "", INBVariable::kAsIs);
  } else {
    list.AddCatVar("w", "", 9, INBVariable::kNumericCategorical, INBVariable::kUnused);
  }
  for (int j = 0; j < kInputs; ++j) {
    const std::string name = "x" + std::to_string(j);
    if (j % 3 == 0) {
      list.AddContVar(name, "", 0, 10, 5, INBVariable::kPossibleInput);
    } else {
      list.AddCatVar(name, "", 2 + j % 4, INBVariable::kNumericCategorical,
                     INBVariable::kPossibleInput);
    }
  }
  for (const int j : trial.fvForced) list.SetVariableRole(kFirst + j, INBVariable::kInput);
  return list;
}

std::vector<Record> MakeRecords(const Trial& trial, int n) {
  std::mt19937 random(7);
  const auto uniform = [&] { return random() * 0x1p-32; };
  std::vector<Record> records;
  for (int i = 0; i < n; ++i) {
    Record r(kFirst + kInputs);
    const int y = static_cast<int>(uniform() * uniform() * trial.fClasses);
    r[0] = uniform() < 0.03 ? MCMV::gMissingValue : y;
    r[1] = uniform() < 0.5 ? 1.0 : 0.1 + static_cast<int>(uniform() * 3);
    for (int j = 0; j < kInputs; ++j) {
      const bool isTied = uniform() < trial.fStrength * 0.06 * j;
      const int cats = j % 3 == 0 ? 10 : 2 + j % 4;
      double value = isTied ? (y + j) % cats : uniform() * cats;
      if (j % 3 != 0) value = std::floor(value);
      r[kFirst + j] = uniform() < 0.07 ? MCMV::gMissingValue : value;
    }
    records.push_back(r);
  }
  return records;
}

std::unique_ptr<NBAlgorithm> Select(const Trial& trial, const std::vector<Record>& records,
                                    NBCrossValidation* validation, NBSelectionResult& result) {
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(1000000);
  settings.SetNThreads(trial.fThreads);
  auto algorithm = std::make_unique<NBAlgorithm>(settings, MakeList(trial));
  TestRecords source(records);
  const auto status = algorithm->SelectAttributes({.fData = source,
                                                   .fNRecords = static_cast<int>(records.size()),
                                                   .fSize = trial.fSize,
                                                   .fbExact = trial.fbExact,
                                                   .fpValidation = validation},
                                                  result);
  EXPECT_FALSE(status.IsError());
  return algorithm;
}

// The first of the order of entry that are in the model.
std::vector<int> ChosenOf(const NBAlgorithm& algorithm, const NBSelectionResult& result) {
  std::vector<int> chosen;
  for (const int index : result.fvSelected) {
    if (algorithm.GetVarList().GetVariableRole(index) == INBVariable::kInput) {
      chosen.push_back(index);
    }
  }
  return chosen;
}

class CrossValidation : public testing::TestWithParam<Trial> {};

TEST_P(CrossValidation, SelectsInEachFoldWhatTheOtherCasesAloneSelect) {
  const Trial& trial = GetParam();
  std::vector<Record> records = MakeRecords(trial, 700);
  NBCrossValidation validation{.fNFolds = 6, .fNRepeats = 2, .fSeed = 5};
  NBSelectionResult result;
  Select(trial, records, &validation, result);
  ASSERT_EQ(validation.fvRuns.size(), 12U);
  EXPECT_EQ(validation.fvCandidates.size(), kInputs - trial.fvForced.size());
  std::erase_if(records, [](const Record& r) { return MCMV::IsMissing(r[0]); });
  std::vector<std::int32_t> targets;
  for (const Record& r : records) targets.push_back(static_cast<std::int32_t>(r[0]));
  for (const NBFoldRun& run : validation.fvRuns) {
    const auto folds = NBFolds::Deal(targets, 6, 5 + static_cast<std::uint64_t>(run.fRepeat));
    std::vector<Record> others;
    for (std::size_t i = 0; i < records.size(); ++i) {
      if (folds[i] != run.fFold) others.push_back(records[i]);
    }
    NBSelectionResult anew;
    const auto model = Select(trial, others, nullptr, anew);
    EXPECT_EQ(run.fvChosen, ChosenOf(*model, anew)) << run.fRepeat << '.' << run.fFold;
    MCCommon::EvaluationCounter counter(static_cast<std::size_t>(trial.fClasses));
    for (std::size_t i = 0; i < records.size(); ++i) {
      if (folds[i] != run.fFold) continue;
      NBOutput output(trial.fClasses);
      static_cast<void>(model->ScoreFullRecord(records[i], output));
      counter.Add(static_cast<std::size_t>(targets[i]),
                  static_cast<std::size_t>(output.GetWinningIndex()), output.GetOutProbabilities(),
                  trial.fbWeighted ? records[i][1] : 1.0);
    }
    const MCCommon::Evaluation expected = counter.Find(model->GetOutput().GetPriors());
    EXPECT_EQ(run.fEvaluation.fNRows, expected.fNRows);
    EXPECT_NEAR(run.fTrainingWeight, model->GetTotalWeight(), 1e-9);
    EXPECT_NEAR(run.fTestWeight, expected.fCases, 1e-9);
    for (std::size_t m = 0; m < MCCommon::kNMeasures; ++m) {
      EXPECT_NEAR(run.fEvaluation.fMeasures[m].fValue, expected.fMeasures[m].fValue, 1e-9) << m;
      EXPECT_NEAR(run.fEvaluation.fPrior[m].fValue, expected.fPrior[m].fValue, 1e-9) << m;
    }
  }
}

// A hundred folds, since lanes are then several batches; strong inputs, since odds then leave what
// a product of them can hold.
INSTANTIATE_TEST_SUITE_P(, CrossValidation,
                         testing::Values(Trial{2, false}, Trial{3, false}, Trial{4, true},
                                         Trial{6, false}, Trial{2, true, {1, 2}},
                                         Trial{3, false, {4}, 6}, Trial{3, false, {}, 5, true},
                                         Trial{2, false, {}, -1, false, 1.25},
                                         Trial{6, true, {}, -1, false, 1.2, 3}));

TEST(CrossValidationFolds, HaveTheSharesOfTheClassesAndDependOnTheSeedAlone) {
  std::vector<std::int32_t> targets;
  for (int i = 0; i < 1000; ++i) targets.push_back(i % 7 == 0 ? 2 : i % 3 == 0 ? 0 : 1);
  for (const int nFolds : {2, 10, 33}) {
    const auto folds = NBFolds::Deal(targets, nFolds, 4);
    std::map<std::pair<int, int>, int> cells;
    std::map<int, int> sizes;
    for (std::size_t i = 0; i < folds.size(); ++i) {
      ++cells[{targets[i], folds[i]}];
      ++sizes[folds[i]];
    }
    for (int k = 0; k < 3; ++k) {
      const auto total = std::count(targets.begin(), targets.end(), k);
      for (int fold = 0; fold < nFolds; ++fold) {
        EXPECT_NEAR((cells[{k, fold}]), static_cast<double>(total) / nFolds, 1.0);
      }
    }
    for (const auto& [fold, size] : sizes) EXPECT_NEAR(size, 1000.0 / nFolds, 1.0);
    EXPECT_EQ(folds, NBFolds::Deal(targets, nFolds, 4));
    EXPECT_NE(folds, NBFolds::Deal(targets, nFolds, 5));
  }
}

// Five bins of one case each and class, of which some are taken out.
TEST(CrossValidationFolds, FillTheirEmptyBinsFromTheNearest) {
  NBVarList list;
  list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddContVar("x", "", 0, 10, 5, INBVariable::kInput);
  NBCodeBuffer codes;
  codes.Resize(1, 10);
  std::vector<Record> records;
  for (int i = 0; i < 10; ++i) {
    records.push_back(Record({i % 2 * 1.0, i / 2 * 2.0 + 1}));
    codes.fvTargets[i] = i % 2;
    codes.fvCodes[0][i] = i / 2;
  }
  NBAlgorithm whole(NaiveBayesSettings(), list);
  TestRecords source(records);
  ASSERT_TRUE(whole.BuildModel(source, 10).IsOK());
  const NBModelView view{whole.GetOutput(), whole.GetInputs()};
  const struct {
    std::vector<std::size_t> fvEmpty;
    std::vector<std::int32_t> fvBins;
  } cases[] = {{{}, {}},
               {{0}, {1, 1, 2, 3, 4}},
               {{4}, {0, 1, 2, 3, 3}},
               {{3, 4}, {0, 1, 2, 2, 2}},
               {{1, 2, 3}, {0, 0, 0, 4, 4}},
               {{0, 1, 4}, {2, 2, 2, 3, 3}},
               {{1, 2, 3, 4}, {0, 0, 0, 0, 0}}};
  for (const auto& [empty, bins] : cases) {
    NBFoldModel fold(view, 10);
    std::vector<std::size_t> out;
    for (const std::size_t bin : empty) out.insert(out.end(), {2 * bin, 2 * bin + 1});
    fold.TakeOut(codes.View(), out);
    fold.Finish(view);
    EXPECT_EQ(fold.BinsOf(0), bins) << testing::PrintToString(empty);
  }
}

TEST(CrossValidationLanes, KeepOddsWithinTheirLimits) {
  const std::vector<double> before = {1e-6, 1e-3, 1, 2, 1e3, 1e6, 0, 3};
  const std::vector<double> factors = {1e-6, 1e-6, 1e-9, 0.5, 1e6, 1e4, 7, 1e-4};
  const std::vector<double> expected = {0, 1e-9, 1e-9, 1, 1e8, 1e8, 0, 3e-4};
  const std::size_t first = 0;
  MCTest::ForEachInstructionSet([&] {
    std::vector<double> odds = before;
    NBLoops::InUse().fMultiplyOdds(1, {factors.data(), nullptr, 1, 8}, &first, &first, 5e-10, 1e8,
                                   odds.data());
    EXPECT_THAT(odds, testing::Pointwise(testing::DoubleNear(1e-15), expected));
  });
}

TEST(CrossValidationRuns, AreTheSameWithAnyInstructionsThreadsAndLanesBesideThem) {
  std::vector<std::vector<double>> found;
  const auto run = [&](int threads, int folds) {
    const Trial trial{3, false, {}, -1, false, 1.0, threads};
    NBCrossValidation validation{.fNFolds = folds, .fNRepeats = 1, .fSeed = 1};
    NBSelectionResult result;
    Select(trial, MakeRecords(trial, 900), &validation, result);
    std::vector<double>& numbers = found.emplace_back();
    for (const NBFoldRun& fold : validation.fvRuns) {
      for (const int index : fold.fvChosen) numbers.push_back(index);
      for (const auto& measure : fold.fEvaluation.fMeasures) numbers.push_back(measure.fValue);
    }
    return validation.fvRuns.size();
  };
  EXPECT_EQ(run(1, 70), 70U);  // more than go together
  EXPECT_EQ(run(3, 70), 70U);
  EXPECT_EQ(found[0], found[1]);
  MCTest::ForEachInstructionSet([&] {
    run(1, 70);
    EXPECT_EQ(found[0], found.back());
  });
}

TEST(CrossValidationRuns, ACancelAtAnyPollEndsThem) {
  class CancelAt : public MCQueryCancel {
   public:
    bool IsCancel() override { return --fLeft < 0; }
    int fLeft = 0;
  } cancel;
  const Trial trial{2, false};
  const std::vector<Record> records = MakeRecords(trial, 60);
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(1000);
  settings.SetCancelPointer(&cancel);
  for (int poll = 0;; ++poll) {
    cancel.fLeft = poll;
    NBAlgorithm algorithm(settings, MakeList(trial));
    TestRecords source(records);
    NBCrossValidation validation{.fNFolds = 3};
    NBSelectionResult result;
    const auto status = algorithm.SelectAttributes(
        {.fData = source, .fNRecords = 60, .fSize = 3, .fpValidation = &validation}, result);
    if (cancel.fLeft >= 0) {
      EXPECT_TRUE(status.IsOK());
      EXPECT_EQ(validation.fvRuns.size(), 3U);
      break;
    }
    ASSERT_EQ(status, MCNaive::Error(MCNaive::kCancelled)) << poll;
    EXPECT_FALSE(algorithm.IsModelBuilt());
  }
}

TEST(CrossValidationRuns, StayEmptyWhereTheyCannotBe) {
  const Trial trial{2, false};
  NBCrossValidation validation{.fNFolds = 100};
  NBSelectionResult result;
  Select(trial, MakeRecords(trial, 90), &validation, result);
  EXPECT_TRUE(validation.fvRuns.empty());
  EXPECT_FALSE(result.fvSelected.empty());
}

}  // namespace
