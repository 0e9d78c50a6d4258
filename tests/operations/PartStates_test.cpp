// State files of parts, which count with the ranges of all, held to the state of the whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "host/data/WholeTable.h"
#include "operations/InspectState.h"
#include "operations/MergeStates.h"
#include "operations/PartPasses.h"
#include "operations/RunCommands.h"
#include "operations/StateFile.h"
#include "tests/operations/PartTables.h"

namespace {

using namespace PredSelect;
using namespace MCTest;
using testing::HasSubstr;

class PartStates : public testing::Test {
 protected:
  PartStates() { std::filesystem::create_directories(fFolder); }
  ~PartStates() override { std::filesystem::remove_all(fFolder); }

  std::string fFolder = testing::TempDir() + "states" + std::to_string(getpid());
};

// State files of parts, as the command line makes them: the empty one leaves its own. `request`
// gives the beginning and the ending of their names.
std::vector<std::string> StatesOf(const Parts& parts, const std::string& ranges,
                                  RunRequest request) {
  std::vector<std::string> paths;
  const std::string path = request.fStatePath;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    TableOptions said;
    said.fpWhole = WholeOf(ranges, static_cast<std::int64_t>(i));
    PrepareTable(*parts[i], said);
    MCHost::OutputDocument document;
    request.fStatePath = path;
    request.fStatePath.insert(path.size() - 4, std::to_string(i));
    std::filesystem::remove(request.fStatePath);
    (void)RunCommands(*parts[i], document, request, {});
    EXPECT_TRUE(std::filesystem::exists(request.fStatePath)) << i << MessagesOf(document);
    paths.push_back(request.fStatePath);
  }
  return paths;
}

ComponentFile MergedOf(const std::vector<std::string>& paths) {
  ComponentFile merged = LoadState(paths.front());
  for (std::size_t i = 1; i < paths.size(); ++i) {
    MergeStates(merged, LoadState(paths[i]), paths[i]);
  }
  return merged;
}

ComponentFile WholeStateOf(const People& people, bool weighted, const RunRequest& request) {
  MemoryTable all;
  Join(people, all);
  PrepareTable(all, Said(weighted));
  MCHost::OutputDocument document;
  EXPECT_EQ(RunCommands(all, document, request, {}), Outcome::kCompleted) << MessagesOf(document);
  return LoadState(request.fStatePath);
}

TEST_F(PartStates, StatesOfAllPartsMergeToThatOfTheWhole) {
  const People people;
  const RunRequest request = {.fCommands = "SELECTPRED income /SCREENING STATUS=OFF.",
                              .fStatePath = fFolder + "/state.bin"};
  const Parts parts = SevenParts(people);
  ComponentFile merged = MergedOf(StatesOf(parts, RangesOf(parts, false), request));
  ComponentFile whole = WholeStateOf(people, false, request);
  MCHost::OutputDocument ours, theirs;
  InspectState(merged, ours);
  InspectState(whole, theirs);
  ExpectSame(ours, theirs);
}

// Predictors that are constant in a part or a sample, user-missing values, weights: to the last
// bit.
TEST_F(PartStates, CountsOfAllPartsMakeTheModelOfTheWhole) {
  const People people;
  const char* const commands[] = {
      "NAIVEBAYES income /SUBSET NOSELECTION /EXCEPT VARIABLES=train.",
      "NAIVEBAYES income /SUBSET NOSELECTION /MISSING USERMISSING=INCLUDE.",
      "NAIVEBAYES income /SUBSET NOSELECTION /TRAININGSAMPLE VARIABLE=train.",
      "NAIVEBAYES income BY home WITH late hours /SUBSET NOSELECTION /TRAININGSAMPLE PERCENT=60."};
  for (const char* command : commands) {
    for (const bool weighted : {false, true}) {
      SCOPED_TRACE(command);
      // Weighted cases are not drawn.
      if (weighted && std::string(command).find("PERCENT") != std::string::npos) continue;
      const Parts parts = SevenParts(people);
      const std::string ranges = RangesOf(parts, weighted);
      const RunRequest request = {.fCommands = command,
                                  .fStatePath = fFolder + (weighted ? "/part.xml" : "/part.bin")};
      std::vector<std::string> paths = StatesOf(parts, ranges, request);
      const ComponentFile merged = MergedOf(paths);
      std::reverse(paths.begin(), paths.end());
      EXPECT_EQ(DigestOf(MergedOf(paths)), DigestOf(merged));
      const ComponentFile whole = WholeStateOf(people, weighted, request);
      ASSERT_NE(merged.fpNaive, nullptr);
      EXPECT_TRUE(ComponentBytes(*merged.fpNaive) == ComponentBytes(*whole.fpNaive));
    }
  }
}

TEST_F(PartStates, CountsThatAreNoFurtherPartAreRefusedByName) {
  const Parts parts = SevenParts(People());
  const std::string ranges = RangesOf(parts, false);
  const auto states = [&](const Parts& of, const std::string& known, const char* more,
                          const char* name) {
    const std::string command = "NAIVEBAYES income /SUBSET NOSELECTION" + std::string(more);
    return StatesOf(of, known, {.fCommands = command, .fStatePath = fFolder + name});
  };
  const std::vector<std::string> good = states(parts, ranges, ".", "/good.bin");
  ComponentFile merged = LoadState(good[0]);
  MergeStates(merged, LoadState(good[2]), good[2]);
  const std::uint64_t before = DigestOf(merged);
  const auto refusal = [&](const std::string& path) {
    try {
      MergeStates(merged, LoadState(path), path);
    } catch (const std::exception& error) {
      EXPECT_THAT(error.what(), HasSubstr(path));
      EXPECT_EQ(DigestOf(merged), before);
      return std::string(error.what());
    }
    return std::string("nothing");
  };
  Parts fewer = SevenParts(People());
  fewer.pop_back();
  const std::string known = RangesOf(fewer, false);
  const RunRequest whole = {.fCommands = "NAIVEBAYES income /SUBSET NOSELECTION.",
                            .fStatePath = fFolder + "/whole.bin"};
  (void)WholeStateOf(People(), false, whole);
  const std::pair<std::string, const char*> refused[] = {
      {good[2], "part 2 is there already"},
      {states(parts, ranges, " /EXCEPT VARIABLES=home.", "/few.bin")[4], "number of variables"},
      {states(parts, ranges, " /CRITERIA BINS=5.", "/bins.bin")[4], "other bins"},
      {states(fewer, known, ".", "/foreign.bin")[4], "other ranges"},
      {whole.fStatePath, "something else"}};
  for (const auto& [path, told] : refused) EXPECT_THAT(refusal(path), HasSubstr(told));
  EXPECT_EQ(refusal(good[5]), "nothing");
}

TEST_F(PartStates, APartIsNotScreenedAlone) {
  const Parts parts = SevenParts(People());
  TableOptions said;
  said.fpWhole = WholeOf(RangesOf(parts, false), 4);
  PrepareTable(*parts[4], said);
  MCHost::OutputDocument document;
  const RunRequest request = {
      .fCommands = "NAIVEBAYES income /SCREENING STATUS=ON /SUBSET NOSELECTION.",
      .fStatePath = fFolder + "/part.bin"};
  EXPECT_EQ(RunCommands(*parts[4], document, request, {}), Outcome::kCommandError);
  EXPECT_THAT(MessagesOf(document), HasSubstr("screening it alone"));
}

// Two parts without a valid case are no reason to refuse one another.
TEST_F(PartStates, EmptyStatesMergeToo) {
  const People people;
  const std::string path = fFolder + "/empty.bin";
  std::optional<ComponentFile> merged;
  for (const int rows : {20, 0, 10}) {
    const std::unique_ptr<MemoryTable> table = people.Missing(rows);
    PrepareTable(*table, {});
    MCHost::OutputDocument document;
    EXPECT_EQ(
        RunCommands(*table, document,
                    {.fCommands = "SELECTPRED income BY home WITH age.", .fStatePath = path}, {}),
        Outcome::kCommandError);
    ComponentFile state = LoadState(path);
    if (merged) {
      MergeStates(*merged, state, path);
    } else {
      merged = std::move(state);
    }
  }
  double weights[2];
  int valid = -1, excluded = -1;
  merged->fpFeature->GetNValidNExcluded(weights[0], weights[1], valid, excluded);
  EXPECT_EQ(valid, 0);
  EXPECT_EQ(excluded, 30);
}

}  // namespace
