// Threads share out inputs, candidates and cases, and nothing that is the user's.

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "tests/InstructionSets.h"
#include "tests/Watched.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::TestRecords;

constexpr int kRecords = 5000, kTables = 4;  // side by side, so that there is work for many

NBVarList MakeList(INBVariable::VariableRole role) {
  NBVarList list;
  list.AddCatVar("y", "", 3, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddWeightVar("w", "", INBVariable::kAsIs);
  for (int t = 0; t < kTables; ++t) {
    const std::string name = std::string(1, static_cast<char>('a' + t));
    for (const int cats : {2, 3, 4, 2, 5}) {
      list.AddCatVar(name + std::to_string(list.Size()), "", cats, INBVariable::kNumericCategorical,
                     role);
    }
    list.AddContVar(name + "c", "", 0, 10, 5, role);
  }
  return list;
}

// `unit`: all weights are 1.
std::vector<Record> MakeRecords(unsigned seed, bool unit) {
  std::vector<Record> records = RandomData::Make(kRecords, seed);
  for (int t = 1; t < kTables; ++t) {
    const auto more = RandomData::Make(kRecords, seed + t);
    for (int i = 0; i < kRecords; ++i) {
      std::vector<double> values = records[i].GetAll();
      values.insert(values.end(), more[i].GetAll().begin() + RandomData::kFirst,
                    more[i].GetAll().end());
      records[i] = Record(values);
    }
  }
  for (Record& record : records) {
    if (unit) record[1] = 1;
  }
  records[40][RandomData::kFirst + 9] = 77;  // out of range, and the second that is told of first
  records[50][RandomData::kFirst + 2] = 99;
  return records;
}

class WatchedRecords : public TestRecords, public MCTest::Watch {
 public:
  using TestRecords::TestRecords;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    Note();
    return TestRecords::NextBlock(maxCases);
  }
};

// Everything that an engine tells after it selected (from memory, or from a file and simulated
// records) or was trained, and of a scored sample.
struct Told {
  std::string fState;
  std::int64_t fStatus;
  std::int64_t fDatum;
  NBSelectionResult fSelected;
  std::vector<std::vector<double>> fMatrix;
  std::vector<double> fProbabilities;
  std::vector<std::int32_t> fWinners;

  bool operator==(const Told& other) const {
    return fState == other.fState && fStatus == other.fStatus && fDatum == other.fDatum &&
           fSelected.fvSelected == other.fSelected.fvSelected &&
           fSelected.fvLogLikelihoods == other.fSelected.fvLogLikelihoods &&
           fSelected.fvResults == other.fSelected.fvResults && fMatrix == other.fMatrix &&
           fProbabilities == other.fProbabilities && fWinners == other.fWinners;
  }
};

enum Job { kTrain, kSelectInMemory, kSelectUnits, kSelectSimulated, kSelectByTest };

class Threads : public testing::TestWithParam<Job> {
 protected:
  NBAlgorithm MakeAlgorithm(int threads, MCQueryCancel* cancel = nullptr) {
    NaiveBayesSettings settings;
    settings.SetNThreads(threads);
    settings.SetMaxRecordsInMemory(GetParam() == kSelectSimulated ? 10 : kRecords);
    settings.SetSampleSize4SimData(3000);
    settings.SetCancelPointer(cancel);
    settings.SetProgressListener(&fListener);
    return {settings,
            MakeList(GetParam() == kTrain ? INBVariable::kInput : INBVariable::kPossibleInput)};
  }

  MCNaive::MCStatus Build(NBAlgorithm& algorithm, NBSelectionResult& result) {
    static_cast<void>(fTraining.NewPass());
    static_cast<void>(fTest.NewPass());
    if (GetParam() == kTrain) return algorithm.BuildModel(fTraining, kRecords);
    const bool isTested = GetParam() == kSelectByTest;
    return algorithm.SelectAttributes({.fData = fTraining,
                                       .fNRecords = kRecords,
                                       .fSize = 8,
                                       .fpTest = isTested ? &fTest : nullptr},
                                      result);
  }

  Told Run(int threads) {
    NBAlgorithm algorithm = MakeAlgorithm(threads);
    Told told;
    EXPECT_FALSE(Build(algorithm, told.fSelected).IsError());
    std::ostringstream state;
    EXPECT_FALSE(algorithm.SaveStateXML(state).IsError());
    told.fState = state.str();
    told.fStatus = algorithm.GetStatus().GetErrorCode();
    told.fDatum = algorithm.GetStatus().GetDiscreteDatum(1);
    NBOutputStatistics stats(3);
    static_cast<void>(fTest.NewPass());
    EXPECT_FALSE(algorithm.ComputeOutputStats(fTest, stats, -1).IsError());
    told.fMatrix = stats.GetMisClassMatrixAsVecOfRows();
    NBScoredBlock scored(threads);
    while (fTest.HasMore()) {
      EXPECT_TRUE(algorithm.ScoreBlock(fTest.NextBlock(4096), scored).IsOK());
      const auto& probabilities = scored.GetProbabilities();
      told.fProbabilities.insert(told.fProbabilities.end(), probabilities.begin(),
                                 probabilities.end());
      told.fWinners.insert(told.fWinners.end(), scored.GetWinners().begin(),
                           scored.GetWinners().end());
    }
    return told;
  }

  MCTest::WatchedListener fListener;
  WatchedRecords fTraining{MakeRecords(5, GetParam() == kSelectUnits)};
  WatchedRecords fTest{MakeRecords(50, false)};
};

TEST_P(Threads, OfAnyNumberGiveTheSameBitsByAnyInstructions) {
  const Told alone = Run(1);
  MCTest::ForEachInstructionSet([&] { EXPECT_TRUE(Run(2) == alone); });
  EXPECT_EQ(alone.fStatus, MCNaive::kCodeOutOfRange);
  for (const int threads : {2, 3, 7}) EXPECT_TRUE(Run(threads) == alone) << threads;
  EXPECT_GT(fListener.fNReports, 0);
  EXPECT_FALSE(fListener.IsElsewhere() || fTraining.IsElsewhere() || fTest.IsElsewhere());
}

// Among the records, and among the steps of a selection.
TEST_P(Threads, StopWhereTheCallersThreadIsTold) {
  for (const int threads : {1, 3}) {
    fListener.fNReports = 0;
    MCTest::CancelAfter atRecord(4000);
    MCTest::CancelAtReport atReport(fListener, 3);
    for (MCQueryCancel* cancel : std::initializer_list<MCQueryCancel*>{&atRecord, &atReport}) {
      NBSelectionResult result;
      NBAlgorithm algorithm = MakeAlgorithm(threads, cancel);
      EXPECT_EQ(Build(algorithm, result), MCNaive::Error(MCNaive::kCancelled));
      EXPECT_FALSE(algorithm.IsModelBuilt());
    }
    EXPECT_FALSE(atRecord.IsElsewhere() || atReport.IsElsewhere());
  }
}

INSTANTIATE_TEST_SUITE_P(OfEveryJob, Threads,
                         testing::Values(kTrain, kSelectInMemory, kSelectUnits, kSelectSimulated,
                                         kSelectByTest));

}  // namespace
