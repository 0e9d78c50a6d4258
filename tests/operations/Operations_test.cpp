// The operations as an application calls them: what they refuse, how they end, what they leave.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"
#include "operations/BuildModel.h"
#include "operations/DescribeTable.h"
#include "operations/InspectState.h"
#include "operations/MergeStates.h"
#include "operations/RankPredictors.h"
#include "operations/ReadsOnce.h"
#include "operations/RequestError.h"
#include "operations/RunCommands.h"
#include "operations/ScoreTable.h"
#include "operations/ScoringDrift.h"
#include "operations/StateFile.h"
#include "operations/TableOptions.h"

namespace {

using namespace PredSelect;
using MCHost::MemoryTable;
using MCHost::OutputDocument;
using testing::ElementsAre;
using testing::HasSubstr;

// The refusal of what is done, as other callers and as the command line show it.
template <class Action>
std::pair<std::string, std::string> RefusalOf(const Action& action) {
  try {
    action();
  } catch (const RequestError& error) {
    return {error.what(), error.TextWithDashes()};
  }
  return {"", "nothing was refused"};
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> TitlesOf(const MCHost::OutputRun& run) {
  std::vector<std::string> titles;
  for (const MCHost::OutputTable& table : run.fTables) {
    titles.push_back(MCHost::ShowText(table.fTitle));
  }
  return titles;
}

// A table of loans, and a folder for files that goes with the test.
class Operations : public testing::Test {
 protected:
  Operations() {
    fTable.AddStrings("paid", {"yes", "no", "yes", "no", "yes", "yes", "no", "no", "yes", "no"});
    fTable.AddStrings("home",
                      {"own", "rent", "own", "rent", "own", "own", "rent", "own", "rent", {}});
    fTable.AddNumbers("age", {31.5, 22, 45, 29, 51, 38, 24, 33, 47, 26});
    std::filesystem::create_directories(fFolder);
  }
  ~Operations() override { std::filesystem::remove_all(fFolder); }

  std::string Path(const std::string& name) const { return fFolder + "/" + name; }

  Outcome Run(const std::string& commands, const std::string& state = "") {
    PrepareTable(fTable, {});
    return RunCommands(fTable, fDocument, {.fCommands = commands, .fStatePath = state}, fAround);
  }

  // What another three cases count, the second of a kind of home that is new.
  ComponentFile CountMore(const std::string& command) {
    MemoryTable table;
    table.AddStrings("paid", {"no", "yes", "no"});
    table.AddStrings("home", {"rent", "shared", "own"});
    table.AddNumbers("age", {52.5, 19, 33});
    PrepareTable(table, {});
    OutputDocument document;
    const RunRequest request{.fCommands = command, .fStatePath = Path("more.bin")};
    EXPECT_EQ(RunCommands(table, document, request, fAround), Outcome::kCompleted);
    return LoadState(Path("more.bin"));
  }

  std::string fFolder = testing::TempDir() + "operations" + std::to_string(getpid());
  MemoryTable fTable;
  OutputDocument fDocument;
  Surroundings fAround;
};

TEST(ReadsOnce, IsSaidOnlyWhereTheTextLeavesNoDoubt) {
  const std::pair<const char*, bool> texts[] = {
      {"SELECTPRED y.", true},
      {"* Ranked.\n\n  selectpred y /MISSING USERMISSING=INCLUDE", true},
      {"SELECTPRED y /PRINT SELECTED\n effects.", false},
      {"SELECTPRED y /PRINT EFF.", false},
      {"SELECTPRED y.\nSELECTPRED z.", false},
      {"NAIVEBAYES y EXCEPT VARIABLES=SELECTPRED.", false},
      {"", false},
  };
  for (const auto& [text, once] : texts) EXPECT_EQ(ReadsOnce(text), once) << text;
}

TEST_F(Operations, PreparingRefusesWhatTheTableLacksAndNamesTheOption) {
  constexpr auto kScale = KOVA_Variable::kScale;
  const struct {
    TableOptions fOptions;
    const char* fRefusal;
  } cases[] = {
      {{{}, {{"Age", kScale}, {"hme", kScale}}, {}, ""},
       "level: the data have no variable \"hme\"; did"},
      {{{}, {{"home", kScale}}, {}, ""}, "level: \"home\" holds texts and cannot be scale."},
      {{{}, {}, {}, "paid"}, "weight: \"paid\" holds texts; a weight must be a number."},
      {{{}, {}, {}, "xyzzy"}, "weight: the data have no variable \"xyzzy\"."},
  };
  for (const auto& c : cases) {
    const auto [plain, dashed] = RefusalOf([&] { PrepareTable(fTable, c.fOptions); });
    EXPECT_THAT(plain, testing::StartsWith(c.fRefusal));
    EXPECT_EQ(dashed, "--" + plain);
  }
}

TEST_F(Operations, ARankingHasEachPredictorOnceWithWhatItsCommandShows) {
  fTable.AddNumbers("same", std::vector<double>(10, 1.0));
  PrepareTable(fTable, {});
  PredSelect::Ranking ranking;
  const PredSelect::RankRequest request{.fTarget = "paid", .fBy = PredSelect::RankBy::kBits};
  ASSERT_EQ(RankPredictors(fTable, fDocument, request, fAround, &ranking), Outcome::kCompleted);
  ASSERT_EQ(ranking.fPredictors.size(), 2u);
  const auto& age = ranking.fPredictors[0];
  EXPECT_EQ(age.fName, "age");
  EXPECT_EQ(age.fRank, 1);
  EXPECT_EQ(age.fTest, "F");
  EXPECT_EQ(age.fDf1, 1.0);
  EXPECT_EQ(age.fDf2, 8.0);
  EXPECT_EQ(age.fEffect, "Eta Squared");
  EXPECT_NEAR(age.fSize, age.fStatistic / (age.fStatistic + 8.0), 1e-12);
  EXPECT_EQ(ranking.fPredictors[1].fName, "home");
  EXPECT_EQ(ranking.fPredictors[1].fMissing, 10.0);
  EXPECT_GT(age.fBits, ranking.fPredictors[1].fBits);
  ASSERT_EQ(ranking.fLeftOut.size(), 1u);
  EXPECT_EQ(ranking.fLeftOut[0].fName, "same");
  EXPECT_EQ(ranking.fLeftOut[0].fReason.fKey, "All Cases Constant");
  const MCHost::OutputRun& run = fDocument.GetRuns().back();
  EXPECT_EQ(run.fCommand, "rank");
  EXPECT_TRUE(run.fbCompleted);
  ASSERT_EQ(run.fTables.size(), 1u);
  EXPECT_EQ(fDocument.fNCases, 10);
}

TEST_F(Operations, AModelSaysWhatEachPredictorAddsAndWhatItIsWorth) {
  fTable.AddNumbers("same", std::vector<double>(10, 1.0));
  fTable.AddNumbers("train", {1, 1, 1, 1, 1, 1, 1, 0, 0, 0});
  PrepareTable(fTable, {});
  // More predictors than screening leaves are no error.
  const PredSelect::ModelRequest request{
      .fTarget = "paid", .fTrainingColumn = "train", .fPredictors = 3};
  PredSelect::ModelSummary model;
  ASSERT_EQ(BuildModel(fTable, fDocument, request, fAround, &model), Outcome::kCompleted);
  EXPECT_EQ(fDocument.GetRuns().size(), 1u);
  EXPECT_THAT(fDocument.GetRuns()[0].fMessages, ElementsAre());
  EXPECT_EQ(model.fCriterion, "Test Data Criterion");
  EXPECT_EQ(model.fNTried, 2);
  ASSERT_GE(model.fSteps.size(), 1u);
  EXPECT_TRUE(MCMV::IsMissing(model.fSteps[0].fBetterBy));
  for (std::size_t i = 1; i < model.fSteps.size(); ++i) {
    EXPECT_EQ(model.fSteps[i].fBetterBy,
              model.fSteps[i - 1].fCriterion - model.fSteps[i].fCriterion);
  }
  ASSERT_EQ(model.fSamples.size(), 2u);
  const PredSelect::ModelSample& test = model.fSamples[1];
  EXPECT_EQ(test.fName, "Test");
  EXPECT_EQ(test.fCases, 3.0);
  EXPECT_NEAR(test.fGuessing, 200.0 / 3.0, 1e-12);
  double wrong = 0.0;
  for (const auto& confusion : model.fConfusions) wrong += confusion.fCases;
  EXPECT_NEAR(wrong, 3.0 - 0.03 * test.fCorrect, 1e-12);
  ASSERT_EQ(model.fLeftOut.size(), 1u);
  EXPECT_EQ(model.fLeftOut[0].fName, "same");

  const auto [plain, dashed] =
      RefusalOf([&] { BuildModel(fTable, fDocument, {.fTarget = "age"}, fAround); });
  EXPECT_THAT(dashed, HasSubstr("--level age=nominal"));
}

TEST_F(Operations, AnErrorInOneCommandKeepsNoOtherFromRunning) {
  EXPECT_EQ(Run("SELECTPRED paid BY nosuch.\nSELECTPRED paid.\n"
                "NAIVEBAYES paid BY home /SAVE PREDVAL(guess).",
                Path("last.bin")),
            Outcome::kCommandError);
  const std::vector<MCHost::OutputRun>& runs = fDocument.GetRuns();
  ASSERT_EQ(runs.size(), 3u);
  EXPECT_FALSE(runs[0].fbCompleted);
  EXPECT_TRUE(runs[1].fbCompleted && runs[2].fbCompleted);
  EXPECT_EQ(fDocument.fNVariables, 3) << "those of the data, not those that were added";
  ASSERT_EQ(runs[2].fNewVariables.size(), 1u);
  EXPECT_EQ(runs[2].fNewVariables[0].fName, "guess");
  EXPECT_THAT(runs[1].fFiles, ElementsAre());
  EXPECT_THAT(runs[2].fFiles, ElementsAre(Path("last.bin")));
  EXPECT_NE(LoadState(Path("last.bin")).fpNaive, nullptr);
}

TEST_F(Operations, AFileThatIsInUseIsNotWrittenOver) {
  PrepareTable(fTable, {});
  const RunRequest request{
      .fCommands = "NAIVEBAYES paid /OUTFILE MODEL='till.xml'.",
      .fUseOf = [](const std::string& path) { return path == "till.xml" ? "the till" : ""; }};
  EXPECT_EQ(RunCommands(fTable, fDocument, request, fAround), Outcome::kCommandError);
  const auto& messages = fDocument.GetRuns().back().fMessages;
  ASSERT_FALSE(messages.empty());
  EXPECT_THAT(MCHost::ShowText(messages.back().fText),
              HasSubstr("would take the place of the till"));
  EXPECT_FALSE(std::filesystem::exists("till.xml"));
}

TEST_F(Operations, TheCallersWishToStopEndsEachOfThem) {
  PrepareTable(fTable, {});
  Run("NAIVEBAYES paid.", Path("model.bin"));
  const ComponentFile state = LoadState(Path("model.bin"));
  fAround.fIsCancelled = [] { return true; };
  OutputDocument results;
  EXPECT_EQ(RunCommands(fTable, results, {.fCommands = "SELECTPRED paid."}, fAround),
            Outcome::kCancelled);
  EXPECT_TRUE(results.GetRuns().empty());
  EXPECT_EQ(DescribeTable(fTable, results, fAround), Outcome::kCancelled);
  EXPECT_EQ(ScoreTable(fTable, *state.fpNaive, results, {}, fAround), Outcome::kCancelled);
  for (const MCHost::OutputRun& run : results.GetRuns()) {
    EXPECT_FALSE(run.fbCompleted) << run.fCommand;
    EXPECT_TRUE(run.fTables.empty()) << run.fCommand;
  }
}

// Twenty cases to learn from, and some that differ from them in every way: a new category of
// either kind, values beyond either end, missing ones of every kind, and nothing usable at all.
TEST_F(Operations, ScoringCountsWhatTheModelWasNotBuiltOn) {
  using Texts = std::vector<std::optional<std::string>>;
  MemoryTable old;
  Texts targets;
  Texts words;
  std::vector<double> codes;
  std::vector<double> numbers;
  for (int i = 0; i < 20; ++i) {
    targets.emplace_back(i % 2 == 0 ? "a" : "b");
    words.emplace_back(i == 5 ? "none" : (i % 4 < 2 ? "u" : "v"));
    codes.push_back(i % 4 < 2 ? 1 : 2);
    numbers.push_back(i < 4 ? -9 : i);  // from 4 to 19
  }
  old.AddStrings("y", targets);
  old.AddStrings("word", words);
  old.AddNumbers("code", codes);
  old.AddNumbers("x", numbers);
  old.GetVariable(1).GetMissingValues().AddString("none");
  old.GetVariable(3).GetMissingValues().SetRange(-9, -9);
  PrepareTable(old, {{}, {{"x", KOVA_Variable::kScale}}, {}, ""});
  const RunRequest request{.fCommands = "NAIVEBAYES y BY word code WITH x /SUBSET NOSELECTION.",
                           .fStatePath = Path("model.bin")};
  ASSERT_EQ(RunCommands(old, fDocument, request, fAround), Outcome::kCompleted);
  const ComponentFile state = LoadState(Path("model.bin"));

  constexpr double kNone = KOVA_SystemMissing;
  MemoryTable now;
  now.AddStrings("word", {"w", "u", "none", {}, "w", "v", "U", "v", "v", "v", "v"});
  now.AddNumbers("code", {1, 7, 2, kNone, 2.5, 2, 2, 2, 2, 2, 2});
  now.AddNumbers("x", {3.9, 4, 19, -9, kNone, 19.1, 1e300, -9, 5, 6, -1e300});
  PrepareTable(now, {{}, {{"x", KOVA_Variable::kScale}}, {}, ""});
  ScoringDrift drift;
  OutputDocument document;
  ASSERT_EQ(ScoreTable(now, *state.fpNaive, document, {}, fAround, &drift), Outcome::kCompleted);
  EXPECT_EQ(drift.fNCases, 11);
  EXPECT_EQ(drift.fNUnusable, 2);
  const auto numbersOf = [](const PredictorDrift& p) {
    return std::vector<std::int64_t>{p.fNUnseen, p.fNBelow, p.fNAbove, p.fNMissing};
  };
  ASSERT_EQ(drift.fPredictors.size(), 3u);
  EXPECT_THAT(numbersOf(drift.fPredictors[0]), ElementsAre(3, 0, 0, 2));
  EXPECT_THAT(numbersOf(drift.fPredictors[1]), ElementsAre(2, 0, 0, 1));
  EXPECT_THAT(numbersOf(drift.fPredictors[2]), ElementsAre(0, 2, 2, 3));
  EXPECT_DOUBLE_EQ(drift.fPredictors[0].fTrainingMissing, 0.05);
  EXPECT_DOUBLE_EQ(drift.fPredictors[2].fTrainingMissing, 0.2);

  std::vector<std::string> messages;
  for (const MCHost::OutputMessage& message : document.GetRuns().back().fMessages) {
    messages.push_back(MCHost::ShowText(message.fText));
  }
  EXPECT_THAT(messages, ElementsAre(HasSubstr(": x (36.4%), word (27.3%), code (18.2%)."),
                                    HasSubstr(": word (18.2% instead of 5.0%)."),
                                    HasSubstr("2 of 11 cases have no usable predictor")));
  EXPECT_THAT(TitlesOf(document.GetRuns().back()),
              ElementsAre("Scoring", "Drift since the model was built"));

  // The same data as before say nothing but what was missing then.
  OutputDocument same;
  ASSERT_EQ(ScoreTable(old, *state.fpNaive, same, {}, fAround), Outcome::kCompleted);
  EXPECT_TRUE(same.GetRuns().back().fMessages.empty());
}

// So many categories that a chunk of the table is scored in several blocks.
TEST_F(Operations, ScoringThatIsStoppedKeepsTheTextsPredictedSoFar) {
  std::vector<std::optional<std::string>> texts;
  for (int i = 0; i < 4096; ++i) texts.emplace_back("class number " + std::to_string(i % 64));
  MemoryTable table;
  table.AddStrings("class", texts);
  table.AddStrings("copy", texts);
  PrepareTable(table, {});
  const RunRequest request{.fCommands = "NAIVEBAYES class /SUBSET NOSELECTION /PRINT NONE.",
                           .fStatePath = Path("model.bin")};
  ASSERT_EQ(RunCommands(table, fDocument, request, fAround), Outcome::kCompleted);
  const ComponentFile state = LoadState(Path("model.bin"));
  int nAsked = 0;
  fAround.fIsCancelled = [&nAsked] { return ++nAsked == 2; };
  EXPECT_EQ(ScoreTable(table, *state.fpNaive, fDocument, {}, fAround), Outcome::kCancelled);
  const auto scan = table.Scan({2});
  const MCHost::ColumnView predicted = scan->Next()->fColumns[0];
  for (std::size_t i = 0; i < 2048; ++i) {
    ASSERT_GE(predicted.fpCodes[i], 0) << i;
    ASSERT_EQ(predicted.fpDictionary->At(predicted.fpCodes[i]), texts[i]) << i;
  }
}

TEST_F(Operations, WhatCannotBeDoneIsRefusedInTheCallersWords) {
  Run("SELECTPRED paid.\nNAIVEBAYES paid.", Path("model.bin"));
  const ComponentFile model = LoadState(Path("model.bin"));
  const ComponentFile ranking = CountMore("SELECTPRED paid.");
  const auto score = [&](const ScoreRequest& request) {
    (void)ScoreTable(fTable, *model.fpNaive, fDocument, request, fAround);
  };
  MemoryTable other;
  other.AddStrings("home", {"own"});
  const struct {
    std::function<void()> fAction;
    const char* fText;
  } cases[] = {
      {[&] { Run("* a comment."); }, "there is no command to run."},
      {[&] { (void)ModelOf(ranking, "it"); },
       "it holds a ranking of predictors, not a Naive Bayes model."},
      {[&] { (void)PredSelect::RankCommand(fTable, {.fTarget = "two\nlines"}); },
       "\"two\nlines\" has a line end, which no command can hold. Rename it."},
      {[&] {
         score({" p", ""});
       },
       "--predicted: \" p\" cannot name a new variable."},
      {[&] {
         score({"p", " q"});
       },
       "--probabilities: \" q\" cannot name new variables."},
      {[&] { (void)ScoreTable(other, *model.fpNaive, fDocument, {}, fAround); },
       "the data have no variable \"age\", which the model needs."},
  };
  for (const auto& c : cases) EXPECT_EQ(RefusalOf(c.fAction).second, c.fText);
  EXPECT_EQ(fTable.ColumnCount(), 3) << "nothing was added";
}

TEST_F(Operations, ARefusedMergeLeavesTheStateAsItWas) {
  Run("SELECTPRED paid.", Path("state.bin"));
  const std::string before = ReadFile(Path("state.bin"));
  ComponentFile state = LoadState(Path("state.bin"));
  const ComponentFile otherRules = CountMore("SELECTPRED paid /SCREENING PCTMISSING=50.");
  EXPECT_EQ(RefusalOf([&] { MergeStates(state, otherRules, "more"); }).first,
            "merge: more cannot be added: other screening rules were asked for.");
  const ComponentFile otherTails = CountMore("SELECTPRED paid /CRITERIA PVALUES=EXACT.");
  EXPECT_THAT(RefusalOf([&] { MergeStates(state, otherTails, "more"); }).first,
              HasSubstr("one was counted with PVALUES=EXACT and the other without."));
  const ComponentFile otherKind = CountMore("SELECTPRED paid BY home age.");
  const auto [plain, dashed] = RefusalOf([&] { MergeStates(state, otherKind, "more"); });
  EXPECT_THAT(dashed, HasSubstr("scale in the other; --level makes them alike."));
  EXPECT_THAT(plain, HasSubstr("scale in the other; level makes them alike."));
  SaveState(state, Path("state.bin"));
  EXPECT_TRUE(ReadFile(Path("state.bin")) == before);

  MergeStates(state, CountMore("SELECTPRED paid."), "more");
  InspectState(state, fDocument);
  EXPECT_THAT(TitlesOf(fDocument.GetRuns().back()),
              ElementsAre("Component", "Target Categories", "Ranking"));
  EXPECT_EQ(state.fDictionary->fPredictors[0].fStrings.size(), 3u);
}

TEST_F(Operations, MemoryGoesToTheCommandsThatStateNone) {
  std::vector<std::optional<std::string>> texts, others;
  for (int i = 0; i < 300; ++i) {
    texts.emplace_back(i % 3 == 0 ? "a" : "b");
    others.emplace_back(i % 3 == 0 && i % 5 != 0 ? "a" : "b");
  }
  MemoryTable table;  // of 32 bytes a case: 4 kilobytes hold 128 of them
  table.AddStrings("y", texts);
  table.AddStrings("x", others);
  PrepareTable(table, {});
  const std::string command = "NAIVEBAYES y BY x /PRINT SUMMARY ";
  const std::string holds = "Memory of ^1 KB holds ^2 of ^3 training cases: ^4, ^5...";
  const std::string isIdle = "Memory for cases has no effect...";
  const struct {
    std::string fCommands;
    double fMemory;
    std::vector<std::string> fKeys;
  } cases[] = {
      {command, 0, {}},
      {command, 1, {holds}},
      {command, 10, {}},
      {command + ".\nSELECTPRED y BY x /PRINT CPS.", 4, {}},
      {"SELECTPRED y BY x /PRINT CPS.", 10, {isIdle}},
      {command + "/CRITERIA MEMALLOCATE=4", 10, {holds, isIdle}},
      {"NAIVEBAYES y BY x /PRINT CPS /SUBSET NOSELECTION", 10, {isIdle}},
      {"NAIVEBAYES nosuch", 10, {"There is no variable \"^1\"."}},
  };
  for (const auto& c : cases) {
    OutputDocument document;
    (void)RunCommands(table, document, {.fCommands = c.fCommands, .fMemory = c.fMemory}, fAround);
    std::vector<std::string> keys;
    for (const MCHost::OutputMessage& message : document.GetRuns().back().fMessages) {
      keys.push_back(message.fText.fKey);
    }
    EXPECT_EQ(keys, c.fKeys) << c.fCommands << c.fMemory;
  }
  // Memory that is there, but not needed, leaves no trace in a state.
  const auto stateWith = [&](double memory) {
    OutputDocument document;
    const RunRequest request{
        .fCommands = command, .fStatePath = Path("state.bin"), .fMemory = memory};
    EXPECT_EQ(RunCommands(table, document, request, fAround), Outcome::kCompleted);
    return ReadFile(Path("state.bin"));
  };
  EXPECT_TRUE(stateWith(2000) == stateWith(0));
  EXPECT_TRUE(stateWith(10) != stateWith(0));
}

TEST_F(Operations, WhatCannotBeWrittenIsSaidBeforeTheCommandsRun) {
  std::ofstream(Path("plain")) << "plain";
  PrepareTable(fTable, {});
  for (const RunRequest& request :
       {RunRequest{.fCommands = "SELECTPRED paid.", .fStatePath = Path("none/x.bin")},
        RunRequest{.fCommands = "SELECTPRED paid.", .fResultsFolder = Path("plain/x")}}) {
    EXPECT_THROW((void)RunCommands(fTable, fDocument, request, fAround), MCHost::HostIOError);
    EXPECT_TRUE(fDocument.GetRuns().empty());
  }
}

TEST_F(Operations, AStateThatCannotBeWrittenLeavesTheFileOfBefore) {
  Run("NAIVEBAYES paid.", Path("model.bin"));
  const ComponentFile model = LoadState(Path("model.bin"));
  EXPECT_THROW(SaveState(model, Path("none/model.bin")), MCHost::HostIOError);
  std::filesystem::create_directory(Path("folder.xml"));
  EXPECT_THROW(SaveState(model, Path("folder.xml")), MCHost::HostIOError);
  std::ofstream(Path("text.bin")) << "no state";
  EXPECT_THROW((void)LoadState(Path("text.bin")), MCHost::HostIOError);
  SaveState(model, Path("text.bin"));
  EXPECT_TRUE(ReadFile(Path("text.bin")) == ReadFile(Path("model.bin")));
  for (const auto& entry : std::filesystem::directory_iterator(fFolder)) {
    EXPECT_EQ(entry.path().string().find(".tmp"), std::string::npos) << entry.path();
  }
}

}  // namespace
