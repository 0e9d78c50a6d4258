// Want of memory at any place of an operation is its status; the component is then as it was
// before, or in error and empty.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "common/xml/XMLPlatform.h"
#include "feature/FSFactory.h"
#include "feature/FSSettings.h"
#include "feature/accumulators/FSCategoryMaps.h"
#include "tests/Starve.h"
#include "tests/feature/RandomRuns.h"

namespace {

using MCFeature::MCStatus;
using Component = std::unique_ptr<IFSAlgorithm>;

const MCStatus kNoMemory(80015, false);

Component NewComponent(FSSettings& settings) {
  FSFactory factory;
  return factory.CreateFSAlgorithm(&settings);
}

class Starved : public testing::TestWithParam<bool> {
 protected:
  Component Accumulated() {
    Component component = NewComponent(fSettings);
    BlocksOf source(fTable, 64);
    EXPECT_TRUE(component->Accumulate(source, -1).IsOK());
    return component;
  }

  std::unique_ptr<MCCommon::RecordIterator> Blocks() const {
    const MCTest::Plenty plenty;
    return std::make_unique<BlocksOf>(fTable, 64);
  }

  // Gives single records, which the base class makes blocks of.
  std::unique_ptr<MCCommon::RecordIterator> Records() const {
    const MCTest::Plenty plenty;
    return std::make_unique<RecordsOf>(fTable);
  }

  // A stage of a component that is made anew each time.
  void StarveStage(const std::function<Component()>& make,
                   const std::function<MCStatus(IFSAlgorithm&)>& stage) {
    Component component;
    MCStatus status;
    const auto call = [&] {
      component = MCTest::InPlenty(make);
      status = stage(*component);
    };
    MCTest::Starve(MCTest::Places::kAll, call, [&](bool refused) {
      EXPECT_EQ(component->GetStatus(), status);
      if (!refused || !status.IsError()) return;
      EXPECT_EQ(status, kNoMemory);
      EXPECT_EQ(component->SortAndRank(0), kNoMemory);
      double out[4];
      EXPECT_FALSE(component->GetPredictorStats(4, 2, out[0], out[1], out[2], out[3]));
    });
    EXPECT_TRUE(status.IsOK());
  }

  // A query or a writer, which leaves the component as it is.
  void StarveQuery(IFSAlgorithm& component, const std::function<MCStatus()>& query) {
    const std::vector<double> before = ReportOf(component);
    MCStatus status;
    MCTest::Starve(
        MCTest::Places::kAll, [&] { status = query(); },
        [&](bool refused) {
          EXPECT_TRUE(status.IsOK() || (refused && status == kNoMemory));
          EXPECT_EQ(ReportOf(component), before);
          EXPECT_TRUE(component.GetStatus().IsOK());
        });
    EXPECT_TRUE(status.IsOK());
  }

  FSSettings fSettings = SettingsFor(GetParam());
  Table fTable = RandomTable(200, GetParam(), 41);
};

TEST_P(Starved, StagesEndInTheStatusAndEmptyTheComponent) {
  const auto make = [this] { return NewComponent(fSettings); };
  const auto accumulated = [this] { return Accumulated(); };
  StarveStage(make, [this](IFSAlgorithm& component) {
    return component.AccumulateAndRank(*Blocks(), -1, true, 0);
  });
  StarveStage(make,
              [this](IFSAlgorithm& component) { return component.Accumulate(*Records(), -1); });
  StarveStage(accumulated,
              [](IFSAlgorithm& component) { return component.ScreenAndRank(true, 2); });
  const Component other = Accumulated();
  StarveStage(accumulated,
              [&](IFSAlgorithm& component) { return component.Merge(*other, nullptr); });
  FSSettings noTarget = fSettings;
  std::vector<int> indices;
  std::vector<std::vector<int>> reasons;
  StarveStage([&] { return NewComponent(noTarget); },
              [&](IFSAlgorithm& component) {
                const MCStatus status =
                    component.CheckPredictorsNoTarget(*Blocks(), indices, reasons, -1);
                EXPECT_EQ(indices.size(), reasons.size());
                return status;
              });
}

TEST_P(Starved, QueriesAndWritersLeaveTheComponentAsItWas) {
  using namespace MCFSCommon;
  const Component component = Accumulated();
  ASSERT_TRUE(component->SortAndRank(0).IsOK());
  std::vector<int> indices;
  std::vector<double> values;
  StarveQuery(*component, [&] {
    const MCStatus status = component->GetTopPredictors(kFStat, indices, values, 0);
    EXPECT_EQ(indices.size(), status.IsOK() ? 4u : 0u);
    std::vector<int>().swap(indices);
    return status;
  });
  const auto starveWriter = [&](const std::function<MCStatus(std::ostream&)>& write) {
    StarveQuery(*component, [&] {
      std::unique_ptr<std::ostringstream> out;
      {
        const MCTest::Plenty plenty;
        out = std::make_unique<std::ostringstream>();
      }
      const MCStatus status = write(*out);
      EXPECT_TRUE(status.IsOK() || !out->good());
      // What a stream could not take leaves it failed, whatever the status.
      return out->good() || status.IsError() ? status : kNoMemory;
    });
  };
  starveWriter([&](std::ostream& out) { return component->ExportOneXML(out, kFStat, 0); });
  starveWriter([&](std::ostream& out) { return component->ExportAllXML(out); });
  starveWriter([&](std::ostream& out) { return component->SaveStateXML(out); });
  starveWriter([&](std::ostream& out) {
    component->Display(out);
    return component->GetStatus();
  });
  StarveQuery(*component, [&] {
    double out[4];
    component->GetPredictorStats(kTStat, 3, out[0], out[1], out[2], out[3]);
    component->GetComponentVersion();
    return component->GetStatus();
  });
}

TEST_P(Starved, AFactoryMakesAComponentOrSaysWhy) {
  FSFactory factory;
  Component component;
  MCTest::Starve(
      MCTest::Places::kAll, [&] { component = factory.CreateFSAlgorithm(&fSettings); },
      [&](bool refused) {
        EXPECT_EQ(component == nullptr, refused);
        EXPECT_EQ(factory.GetStatus(), refused ? kNoMemory : MCStatus());
      });
}

// Binary alone: the parser of XML does not come through want of memory, whoever calls it.
TEST_P(Starved, AStateIsRestoredWholeOrNotAtAll) {
  const std::string path = testing::TempDir() + "starved_" + std::to_string(GetParam()) + ".state";
  const Component saved = Accumulated();
  const auto open = [&path](std::ios::openmode mode) {
    const MCTest::Plenty plenty;
    return std::fstream(path, mode | std::ios::binary);
  };
  {
    std::fstream out = open(std::ios::out);
    ASSERT_TRUE(saved->SaveState(out).IsOK());
  }
  FSFactory factory;
  Component component;
  const auto restore = [&] {
    std::fstream in = open(std::ios::in);
    component = factory.RestoreFSAlgorithmFromBinary(in);
  };
  const std::vector<double> before = ReportOf(*saved);
  MCTest::Starve(MCTest::Places::kAll, restore, [&](bool refused) {
    EXPECT_EQ(component == nullptr, factory.GetStatus().IsError());
    if (component == nullptr) {
      EXPECT_TRUE(refused);
      EXPECT_EQ(factory.GetStatus(), MCStatus(80004, false));
    } else {
      EXPECT_EQ(ReportOf(*component), before);
    }
  });
  EXPECT_NE(component, nullptr);
  std::remove(path.c_str());
}

INSTANTIATE_TEST_SUITE_P(Memory, Starved, testing::Bool());

// In processes of their own, which have no parser from then on.
TEST(StarvedXML, WhatDoesNotComeUpAtFirstNeverDoes) {
  const auto failures = [](int room) {
    int calls = 0, failed = 0;
    const auto start = [&] {
      ++calls;
      try {
        while (calls <= room) ::operator delete(::operator new(1));  // until one is refused
        const MCCommonXML::XMLPlatform platform;
      } catch (const std::bad_alloc&) {
        ++failed;
      }
    };
    MCTest::Starve(MCTest::Places::kSome, start, [](bool) {});
    return failed - room;
  };
  for (const int room : {0, 1, 9})
    EXPECT_EXIT(_exit(failures(room)), testing::ExitedWithCode(2), "");
}

}  // namespace
