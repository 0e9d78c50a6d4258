// Memory that runs out at any place of an operation: a status, never an exception.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBFactory.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "tests/Starve.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using MCCommon::Record;
using nbtest::RandomData;
using nbtest::TestRecords;

using Component = std::unique_ptr<INBAlgorithm>;
using Operation = std::function<MCNaive::MCStatus(INBAlgorithm&)>;

constexpr int kCases = 40;

Component MakeComponent(bool selects, bool inMemory) {
  NaiveBayesSettings settings;
  settings.SetMaxRecordsInMemory(inMemory ? 1000 : 1);
  settings.SetSampleSize4SimData(20);
  NBVarList list = RandomData::MakeList(selects ? std::vector<int>{0} : std::vector<int>{0, 1, 5});
  return NBFactory().CreateNBAlgorithm(settings, list);
}

// Runs the operation on fresh components with room for 0, 1, 2, ... allocations until none is
// refused. Where one was, the status says so, and sticks if the operation changes the component.
void Starve(const char* name, const std::function<Component()>& make, const Operation& operation,
            bool changes) {
  Component component;
  MCNaive::MCStatus status;
  const auto call = [&] {
    component = MCTest::InPlenty(make);
    EXPECT_NO_THROW(status = operation(*component)) << name;
  };
  MCTest::Starve(MCTest::Places::kAll, call, [&](bool refused) {
    ASSERT_EQ(status.IsError(), refused) << name;
    if (!refused) return;
    EXPECT_EQ(status, MCNaive::Error(MCNaive::kNoMemory)) << name;
    EXPECT_EQ(component->GetStatus().IsError(), changes) << name;
    EXPECT_FALSE(changes && component->IsModelBuilt()) << name;
  });
}

TEST(Memory, MayRunOutAnywhereInAnOperation) {
  TestRecords data(RandomData::Make(kCases, 1)), test(RandomData::Make(kCases, 2));
  const Record full = data.All()[0];
  Record inputs(3);
  NBOutput output(RandomData::kClasses);
  const auto fresh = [] { return MakeComponent(false, true); };
  const auto selecting = [] { return MakeComponent(true, true); };
  const auto filing = [] { return MakeComponent(true, false); };
  const auto built = [&data] {
    Component component = MakeComponent(false, true);
    data.NewPass();
    EXPECT_FALSE(component->BuildModel(data, kCases).IsError());
    return component;
  };
  const Component other = built();
  const auto select = [&](bool tests) {
    return [&data, &test, tests](INBAlgorithm& component) {
      NBSelectionResult result;
      data.NewPass();
      return component.SelectAttributes(
          {.fData = data, .fNRecords = kCases, .fpTest = tests ? &test : nullptr}, result);
    };
  };
  const auto block = [&data]() -> const MCCommon::RecordBlock& {
    data.NewPass();
    return data.NextBlock(kCases);
  };
  const struct {
    const char* fName;
    std::function<Component()> fMake;
    bool fbChanges;
    Operation fOperation;
  } cases[] = {
      {"build", fresh, true,
       [&](auto& c) {
         data.NewPass();
         return c.BuildModel(data, kCases);
       }},
      {"update", fresh, true,
       [&](auto& c) {
         data.NewPass();
         return c.Update(data, kCases);
       }},
      {"merge", built, true, [&](auto& c) { return c.MergeModel(other.get(), true); }},
      {"select", selecting, true, select(false)},
      {"select by test data", selecting, true, select(true)},
      {"select from a file", filing, true, select(false)},
      {"score", built, false, [&](auto& c) { return c.Score(inputs, output); }},
      {"score full", built, false, [&](auto& c) { return c.ScoreFullRecord(full, output); }},
      {"accumulate", built, true, [&](auto& c) { return c.ScoreAndAccum(full, output, true); }},
      {"block", built, false,
       [&](auto& c) {
         NBScoredBlock scored;
         return c.ScoreBlock(block(), scored);
       }},
      {"accumulate block", built, true,
       [&](auto& c) {
         NBScoredBlock scored;
         const auto flags = MCTest::InPlenty([] { return std::vector<char>(kCases, 1); });
         return c.ScoreAndAccumBlock(block(), scored, flags);
       }},
      {"statistics", built, false,
       [&](auto& c) {
         auto stats = MCTest::InPlenty([] { return NBOutputStatistics(RandomData::kClasses); });
         data.NewPass();
         return c.ComputeOutputStats(data, stats, -1);
       }},
  };
  for (const auto& c : cases) Starve(c.fName, c.fMake, c.fOperation, c.fbChanges);
}

// What a stream lacks memory for leaves the stream failed; what the component lacks it for is told.
TEST(Memory, MayRunOutInFactoryAndDocuments) {
  TestRecords data(RandomData::Make(kCases, 1));
  const Component component = MakeComponent(false, true);
  ASSERT_FALSE(component->BuildModel(data, kCases).IsError());
  const std::string path = testing::TempDir() + "memory_test.state";
  const std::function<MCNaive::MCStatus()> cases[] = {
      [&] {
        NaiveBayesSettings settings;
        NBVarList list = MCTest::InPlenty([] { return RandomData::MakeList({0}); });
        NBFactory factory;
        const bool isMade = factory.CreateNBAlgorithm(settings, list) != nullptr;
        EXPECT_EQ(isMade, factory.GetStatus().IsOK());
        return factory.GetStatus();
      },
      [&] {
        std::ostringstream os;
        const MCNaive::MCStatus status = component->ExportModelXML(os, nullptr);
        return status.IsOK() && os.fail() ? MCNaive::Error(MCNaive::kNoMemory) : status;
      },
      [&] {
        std::ostringstream os;
        return component->SaveStateXML(os);
      },
      [&] {
        std::fstream os =
            MCTest::InPlenty([&] { return std::fstream(path, std::ios::out | std::ios::binary); });
        return component->SaveState(os);
      },
      [&] {
        const bool isTold = !component->GetComponentVersion().empty();
        return isTold ? MCNaive::MCStatus() : MCNaive::Error(MCNaive::kNoMemory);
      },
  };
  for (const auto& operation : cases) {
    const auto place = &operation - cases;
    MCNaive::MCStatus status;
    const auto call = [&] { EXPECT_NO_THROW(status = operation()) << place; };
    MCTest::Starve(MCTest::Places::kAll, call, [&](bool refused) {
      ASSERT_EQ(status.IsError(), refused) << place;
      const bool isTold = status.GetErrorCode() == MCNaive::kNoMemory ||
                          status.GetErrorCode() == MCNaive::kNotSaved;
      EXPECT_TRUE(!refused || isTold) << place << ' ' << status.GetErrorCode();
    });
    EXPECT_TRUE(component->GetStatus().IsOK());
  }
  std::remove(path.c_str());
}

// Binary alone: the parser of XML does not come through want of memory, whoever calls it.
TEST(Memory, MayRunOutWhileAStateIsRestored) {
  TestRecords data(RandomData::Make(kCases, 1));
  const Component saved = MakeComponent(false, true);
  ASSERT_FALSE(saved->BuildModel(data, kCases).IsError());
  const std::string path = testing::TempDir() + "memory_restored.state";
  const auto open = [&path](std::ios::openmode mode) {
    const MCTest::Plenty plenty;
    return std::fstream(path, mode | std::ios::binary);
  };
  const auto contentOf = [&open](const INBAlgorithm& component) {
    std::fstream out = open(std::ios::out | std::ios::in | std::ios::trunc);
    EXPECT_TRUE(component.SaveState(out).IsOK());
    out.seekg(0);
    return std::string(std::istreambuf_iterator<char>(out), {});
  };
  const std::string before = contentOf(*saved);
  NBFactory factory;
  Component component;
  const auto restore = [&] {
    std::fstream in = open(std::ios::in);
    EXPECT_NO_THROW(component = factory.RestoreNBAlgorithmFromBinary(in));
  };
  MCTest::Starve(MCTest::Places::kAll, restore, [&](bool refused) {
    EXPECT_EQ(component == nullptr, factory.GetStatus().IsError());
    EXPECT_TRUE(refused || component != nullptr);
    if (component != nullptr) {
      EXPECT_EQ(contentOf(*component), before);
    }
  });
  EXPECT_NE(component, nullptr);
  std::remove(path.c_str());
}

}  // namespace
