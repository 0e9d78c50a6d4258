// Threads share out the predictors of a pass, and nothing that is the user's.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "feature/FSFactory.h"
#include "tests/Watched.h"
#include "tests/feature/RandomRuns.h"

namespace {

using Component = std::unique_ptr<IFSAlgorithm>;

constexpr int kTables = 6;  // side by side, so that there is work for many

Table WideTable(std::size_t n, bool catTarget) {
  Table wide = RandomTable(n, catTarget, 1);
  for (unsigned seed = 2; seed <= kTables; ++seed) {
    const Table more = RandomTable(n, catTarget, seed);
    wide.insert(wide.end(), more.begin() + 2, more.end());
  }
  return wide;
}

FSSettings WideSettings(bool catTarget, int threads) {
  FSSettings settings;
  settings.SetTargetType(catTarget);
  for (int t = 0; t < kTables; ++t) {
    settings.AddPredictors(2, true);
    settings.AddPredictors(2, false);
  }
  settings.SetWeightPosition(1);
  settings.SetWeightToFreq(MCFSCommon::kAsIs);
  settings.SetNThreads(threads);
  return settings;
}

class WatchedBlocks : public BlocksOf, public MCTest::Watch {
 public:
  using BlocksOf::BlocksOf;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    Note();
    return BlocksOf::NextBlock(maxCases);
  }
};

std::string StateOf(const IFSAlgorithm& component) {
  std::ostringstream os;
  EXPECT_TRUE(component.SaveStateXML(os).IsOK());
  return os.str();
}

class Threads : public testing::TestWithParam<bool> {
 protected:
  // What is told of the counts and of the ranking under so many threads.
  std::pair<std::string, std::vector<double>> Run(int threads) {
    FSSettings settings = WideSettings(GetParam(), threads);
    MCTest::WatchedListener listener;
    settings.SetProgressListener(&listener);
    settings.SetNSkippedRecordReports(1999);
    FSFactory factory;
    const Component component = factory.CreateFSAlgorithm(&settings);
    WatchedBlocks source(fTable, 4096);
    EXPECT_TRUE(component->Accumulate(source, -1).IsOK());
    std::string state = StateOf(*component);
    EXPECT_TRUE(component->ScreenAndRank(true, 0).IsOK());
    EXPECT_EQ(listener.fNReports, 4);
    EXPECT_FALSE(source.IsElsewhere() || listener.IsElsewhere());
    return {state, ReportOf(*component)};
  }

  Table fTable = WideTable(9000, GetParam());
};

TEST_P(Threads, OfAnyNumberGiveTheSameBits) {
  const auto [state, report] = Run(1);
  for (const int threads : {2, 3, 7}) {
    const auto [otherState, otherReport] = Run(threads);
    EXPECT_EQ(otherState, state) << threads;
    EXPECT_TRUE(SameBits(otherReport, report)) << threads;
  }
}

TEST_P(Threads, StopWhereTheCallersThreadIsTold) {
  for (const int threads : {1, 3}) {
    FSSettings settings = WideSettings(GetParam(), threads);
    MCTest::CancelAfter cancel(2);
    settings.SetCancelPointer(&cancel);
    FSFactory factory;
    const Component component = factory.CreateFSAlgorithm(&settings);
    BlocksOf source(fTable, 4096);
    EXPECT_EQ(component->Accumulate(source, -1), MCFeature::Error(MCFeature::kCancelled));
    EXPECT_FALSE(cancel.IsElsewhere());
  }
}

INSTANTIATE_TEST_SUITE_P(BothTargets, Threads, testing::Bool());

}  // namespace
