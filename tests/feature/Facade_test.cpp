// The component and its factory as interfaces: the order of their operations, cancel, dumps, and
// arguments outside their range.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <vector>

#include "common/Cancel.h"
#include "common/Progress.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSMapIStat.h"
#include "feature/accumulators/FSMaps.h"
#include "feature/accumulators/IFSPredTargetAccum.h"
#include "feature/ranking/FSPredSort.h"
#include "tests/feature/RandomRuns.h"

namespace {

using MCFeature::MCStatus;
using testing::HasSubstr;

// Where the table of virtual operations holds one (Itanium C++ ABI: its offset, and 1).
template <class Member>
std::uintptr_t SlotOf(Member member) {
  std::uintptr_t word = 0;
  std::memcpy(&word, &member, sizeof word);
  return word;
}

TEST(Facade, OperationsKeepTheirPlaces) {
  using A = IFSAlgorithm;
  using P = IFSPredTargetAccum;
  const std::vector<std::uintptr_t> component = {
      SlotOf(&A::GetComponentVersion),
      SlotOf(&A::GetStatus),
      SlotOf(&A::Accumulate),
      SlotOf(&A::GetNValidNExcluded),
      SlotOf(&A::GetNTargetCategories),
      SlotOf(&A::GetTargetCategoryCount),
      SlotOf(&A::GetTargetCategoryInfo),
      SlotOf(&A::CheckPredAllMissConst),
      SlotOf(&A::ScreenPredictors),
      SlotOf(&A::GetNDeletedPred),
      SlotOf(&A::GetIndicesDelPred),
      SlotOf(&A::GetReasonsDelPred),
      SlotOf(&A::SortAndRank),
      SlotOf(&A::AccumulateAndRank),
      SlotOf(&A::CheckPredictorsNoTarget),
      SlotOf(&A::ExportOneXML),
      SlotOf(&A::GetPredictorStats),
      SlotOf(&A::ExportAllXML),
      SlotOf(&A::SaveState),
      SlotOf(&A::SaveStateXML),
      SlotOf(&A::Cancel),
      SlotOf(&A::SetProgressListener),
      SlotOf(&A::SetCancelPtr),
      SlotOf(static_cast<const FSSettings* (A::*)() const>(&A::GetSettings)),
      SlotOf(static_cast<FSSettings* (A::*)()>(&A::GetSettings)),
      SlotOf(&A::GetRanks),
      SlotOf(&A::GetCriterionValues),
      SlotOf(&A::GetTopPredictors),
      SlotOf(&A::IsDataAccumulated),
      SlotOf(&A::ArePredictorsRanked),
      SlotOf(&A::Display)};
  const std::vector<std::uintptr_t> accumulator = {
      SlotOf(&P::AddCase),         SlotOf(&P::AddMissing),       SlotOf(&P::AddCaseOneVariable),
      SlotOf(&P::IsAllMissing),    SlotOf(&P::IsAllConstant),    SlotOf(&P::CheckDelete),
      SlotOf(&P::CheckAllReasons), SlotOf(&P::ComputeVariances), SlotOf(&P::ComputeCrit),
      SlotOf(&P::GetOutputStats),  SlotOf(&P::IsCategorical),    SlotOf(&P::WriteObject),
      SlotOf(&P::ReadObject),      SlotOf(&P::WriteObjectXML),   SlotOf(&P::ReadObjectXML),
      SlotOf(&P::Display)};
  for (const auto& slots : {component, accumulator}) {
    for (std::size_t k = 1; k < slots.size(); ++k) {
      EXPECT_EQ(slots[k] - slots[k - 1], sizeof(void*)) << k;
    }
  }
}

TEST(Facade, AStatusHasThreeDataOfEachKind) {
  MCStatus status(80012, false);
  const MCStatus before = status;
  status.SetDiscreteDatum(3, 7);
  status.SetScaleDatum(99, 7.0);
  EXPECT_EQ(status, before);
  status.SetDiscreteDatum(2, 7);
  EXPECT_EQ(status.GetDiscreteDatum(2), 7);
  EXPECT_EQ(status.GetDiscreteDatum(3), 0);
  EXPECT_EQ(status.GetScaleDatum(3), 0.0);
}

TEST(Facade, ACancelledFactoryStopsTheComponentThatItMade) {
  FSSettings settings = SettingsFor(true);
  const Table table = RandomTable(300, true, 3);
  FSFactory factory;
  const auto first = factory.CreateFSAlgorithm(&settings);
  auto last = factory.CreateFSAlgorithm(&settings);
  for (IFSAlgorithm* component : {first.get(), last.get()}) {
    BlocksOf source(table, 64);
    EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 0).IsOK());
  }
  factory.Cancel();
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), 1);
  EXPECT_EQ(factory.CreateFSAlgorithm(&settings), nullptr);
  EXPECT_EQ(last->GetStatus().GetErrorCode(), 1);
  double out[4];
  EXPECT_FALSE(last->GetPredictorStats(0, 0, out[0], out[1], out[2], out[3]));
  EXPECT_TRUE(first->GetStatus().IsOK());
  last.reset();
  factory.Cancel();  // what it made is gone
}

// Cancels the factory in the midst of a data pass.
class CancellingListener : public ProgressListener {
 public:
  explicit CancellingListener(FSFactory& factory) : fFactory(factory) {}
  void Report(const ProgressReport&) override { fFactory.Cancel(); }

 private:
  FSFactory& fFactory;
};

TEST(Facade, AFactoryCancelledDuringAStageEndsIt) {
  FSSettings settings = SettingsFor(true);
  const Table table = RandomTable(2000, true, 3);
  FSFactory factory;
  CancellingListener listener(factory);
  settings.SetProgressListener(&listener);
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 64);
  EXPECT_EQ(component->Accumulate(source, -1).GetErrorCode(), 1);
  EXPECT_TRUE(source.HasMore());
  EXPECT_EQ(component->GetStatus().GetErrorCode(), 1);
}

// The same column for every predictor of very wide records.
class WideRecords : public MCCommon::RecordIterator {
 public:
  WideRecords(std::size_t columns, std::size_t cases) : fColumns(columns), fLeft(cases) {}
  bool HasMore() override { return fLeft > 0; }
  const MCCommon::Record* NextRecord() override { return nullptr; }
  FailReason GetFailReason() const override { return kSuccess; }
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t n = std::min(maxCases, fLeft);
    fLeft -= n;
    fCellsInBlock = n * fColumns;
    fBlock.Reset(fColumns, n);
    for (std::size_t j = 0; j < fColumns; ++j) fBlock.SetColumn(j, fValues.data());
    return fBlock;
  }
  std::size_t CellsInBlock() const { return fCellsInBlock; }

 private:
  std::size_t fColumns;
  std::size_t fLeft;
  std::size_t fCellsInBlock = 0;
  std::vector<double> fValues = std::vector<double>(MCCommon::RecordBlock::kMaxCases, 1.0);
  MCCommon::RecordBlock fBlock;
};

// Asked at each poll how much was done since the last one.
class Poll : public MCQueryCancel {
 public:
  explicit Poll(const WideRecords& source) : fSource(source) {}
  bool IsCancel() override {
    fMost = std::max(fMost, fSource.CellsInBlock());
    return false;
  }
  std::size_t fMost = 0;

 private:
  const WideRecords& fSource;
};

TEST(Facade, CancelIsPolledAfterSoManyCellsHoweverWideTheRecords) {
  for (const bool transactions : {false, true}) {
    FSSettings settings(3000, true, true);
    settings.SetFlagTrInput(transactions);
    WideRecords source(transactions ? 4 : 3001, 4096);
    Poll poll(source);
    settings.SetCancelPointer(&poll);
    FSFactory factory;
    static_cast<void>(factory.CreateFSAlgorithm(&settings)->Accumulate(source, -1));
    EXPECT_GT(poll.fMost, 0u);
    EXPECT_LE(poll.fMost, 600000u);
    if (transactions) {
      EXPECT_LE(poll.fMost / 4 * 3000, 600000u);
    }
  }
}

TEST(Facade, ANegativeCountOfTopPredictorsIsTheNumberOfBest) {
  FSSettings settings = SettingsFor(true);
  const Table table = RandomTable(500, true, 12);
  FSFactory factory;
  const auto component = factory.CreateFSAlgorithm(&settings);
  BlocksOf source(table, 64);
  EXPECT_TRUE(component->AccumulateAndRank(source, -1, false, 2).IsOK());
  std::vector<int> indices, best;
  std::vector<double> values;
  EXPECT_TRUE(component->GetTopPredictors(MCFSCommon::kFStat, best, values, 0).IsOK());
  EXPECT_TRUE(component->GetTopPredictors(MCFSCommon::kFStat, indices, values, -3).IsOK());
  EXPECT_EQ(best.size(), 2u);
  EXPECT_EQ(indices, best);
}

template <class Object>
std::string DumpOf(const Object& object) {
  std::ostringstream out;
  object.Display(out);
  return out.str();
}

TEST(Facade, DumpsShowWhatTheirObjectsHold) {
  FSMapICnt counts;
  counts.IncrementByFreq(7, 2.5);
  FSMapIPCnt both;
  both.IncrementByFreq(7, 2.5);
  FSMapPiCnt pairs;
  pairs.IncrementByFreq({7, 8}, 2.5);
  FSMapIStat groups;
  groups.Accumulate(7, 1.5, 2.5);
  EXPECT_THAT(DumpOf(counts), HasSubstr("7: 2.5"));
  EXPECT_THAT(DumpOf(both), HasSubstr("7: 1 cases, weight 2.5"));
  EXPECT_THAT(DumpOf(pairs), HasSubstr("7, 8: 2.5"));
  EXPECT_THAT(DumpOf(groups), HasSubstr("7: weight 2.5, mean 1.5"));
  EXPECT_THAT(DumpOf(FSPredSort{0.5, 3.0, MCMV::gMissingValue, 4}),
              testing::AllOf(HasSubstr("Predictor 4"), HasSubstr("First tie-break = 3"),
                             HasSubstr("Second tie-break = missing")));
  EXPECT_THAT(DumpOf(FSSettings({true, false}, true)),
              testing::AllOf(HasSubstr("Predictor 0 is categorical"),
                             HasSubstr("Predictor 1 is continuous")));
}

}  // namespace
