// NAIVEBAYES commands that cannot do what they are asked, or are stopped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;
using MCTest::Strings;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

class NaiveBayesFailures : public MCTest::CommandTest {
 protected:
  void SetUp() override {
    fFolder = fs::temp_directory_path() / ("naive" + std::to_string(getpid()));
    fs::create_directories(fFolder);
    FillTable();
  }
  void TearDown() override { fs::remove_all(fFolder); }

  // Two classes; "good" and "near" tell them apart, "late" and "later" vary among test cases only.
  void FillTable() {
    const int n = 120;
    Strings y, good, fair, late;
    std::vector<double> near, train, later, zero(n, 0.0), one(n, 1.0), first(n, 0.0);
    for (int i = 0; i < n; ++i) {
      const bool isTraining = i % 3 != 0;
      y.push_back(i < n / 2 ? "no" : "yes");
      good.push_back((i < n / 2) == (i % 7 != 0) ? "a" : "b");
      fair.push_back((i < n / 2) == (i % 4 != 0) ? "c" : "d");
      near.push_back((i < n / 2 ? 0 : 2) + i % 5);
      late.push_back(isTraining ? "e" : i % 2 == 0 ? "f" : "g");
      later.push_back(isTraining ? 1 : i % 2);
      train.push_back(isTraining ? 1 : 0);
    }
    first[0] = 1;
    fTable.AddStrings("y", y);
    fTable.AddStrings("good", good);
    fTable.AddStrings("fair", fair);
    fTable.AddNumbers("near", near);
    fTable.AddStrings("late", late);
    fTable.AddNumbers("later", later);
    fTable.AddStrings("flat", Strings(n, "x"));
    fTable.AddStrings("empty", Strings(n));
    fTable.AddNumbers("train", train);
    fTable.AddNumbers("zero", zero);
    fTable.AddNumbers("one", one);
    fTable.AddNumbers("first", first);
  }

  static std::vector<std::string> Errors(const json& run) {
    std::vector<std::string> keys;
    for (const json& message : run["messages"]) {
      if (message["severity"] == "error") keys.push_back(message["key"]);
    }
    return keys;
  }

  std::vector<std::string> FilesLeft() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(fFolder)) names.push_back(entry.path());
    return names;
  }

  fs::path fFolder;
};

TEST_F(NaiveBayesFailures, SayWhyInOneMessageAndLeaveNoTableOrFile) {
  const std::string model = " /OUTFILE MODEL='" + (fFolder / "model.xml").string() + "'";
  const struct {
    std::string fCommand;
    const char* fKey;
  } cases[] = {
      {"flat BY good fair", "Dependent variable constant..."},
      {"empty BY good fair", "No valid cases..."},
      {"empty BY good fair /MISSING USERMISSING=INCLUDE",
       "All cases excluded in Predictor Selection..."},
      {"y BY flat empty", "All predictors missing or constant..."},
      {"y BY flat /SUBSET NOSELECTION", "All predictors missing or constant..."},
      {"y BY flat /FORCE FACTORS=good", "All possible predictors excluded..."},
      {"y BY good /FORCE FACTORS=fair flat", "Some forced predictors excluded..."},
      {"y BY good fair flat /SUBSET EXACTSIZE=2", "Too few possible predictors, exact size..."},
      {"y BY good fair flat /SUBSET MAXSIZE=3", "Too few possible predictors, maximum size..."},
      {"y BY good WITH near /CRITERIA BINS=40000000",
       "Too many categories for the model: ^1, ^2, ^3..."},
      {"y BY good /TRAININGSAMPLE VARIABLE=one /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)",
       "No valid cases in test sample..."},
      {"y BY good /TRAININGSAMPLE VARIABLE=zero", "No valid cases..."},
      {"y BY good /TRAININGSAMPLE VARIABLE=first", "Too few training cases..."},
      {"y BY good /CRITERIA TIMER=0.0000001",
       "Time limit of ^2 seconds reached after ^1 records..."},
      {"y BY good fair late WITH near later /CRITERIA MEMALLOCATE=4",
       "Temporary file in ^1 failed..."},
  };
  fTempPath = "/no such folder";
  for (const auto& c : cases) {
    const int nVariables = fTable.ColumnCount();
    const json run = Run("NAIVEBAYES " + c.fCommand + model +
                         " /SAVE PREDVAL PREDPROB /PRINT CPS SUMMARY SELECTED CLASSIFICATION.");
    EXPECT_THAT(Errors(run), ElementsAre(c.fKey)) << c.fCommand;
    EXPECT_TRUE(fbError) << c.fCommand;
    EXPECT_THAT(Titles(run), IsEmpty()) << c.fCommand;
    EXPECT_EQ(fTable.ColumnCount(), nVariables) << c.fCommand;
    EXPECT_THAT(FilesLeft(), IsEmpty()) << c.fCommand;
  }
}

TEST_F(NaiveBayesFailures, ShowWhatWasExcludedWhenTooLittleIsLeft) {
  const json run = Run("NAIVEBAYES y BY flat empty WITH near /SUBSET MAXSIZE=3.");
  EXPECT_THAT(Titles(run), ElementsAre("Excluded Predictors"));
  EXPECT_EQ(Cell(run, "ExcludedPredictors", {"All Cases Missing", "Categorical"}, {"Predictors"}),
            json{"empty"});
  EXPECT_EQ(Cell(run, "ExcludedPredictors", {"All Cases Constant", "Categorical"}, {"Predictors"}),
            json{"flat"});
  EXPECT_THAT(Keys(run), ElementsAre("Too few possible predictors, maximum size..."));
}

TEST_F(NaiveBayesFailures, NameAFileThatCannotBeWrittenBeforeAnyWork) {
  fPollsLeft = 200;  // the first pass alone asks that often
  const json run = Run("NAIVEBAYES y BY good /OUTFILE MODEL='/no such folder/m.xml'.");
  EXPECT_THAT(Keys(run), Contains("File cannot be written: ^1"));
  EXPECT_THAT(run["messages"].back()["text"].get<std::string>(),
              testing::HasSubstr("/no such folder/m.xml"));
  EXPECT_TRUE(fbError);
  EXPECT_THAT(Titles(run), IsEmpty());
}

// The user's wish may come at any time: whenever it does, the run ends with a word about it, and
// what is left behind is as if it had not been.
TEST_F(NaiveBayesFailures, StopAtAnyTimeWithoutALeftover) {
  const std::string model = (fFolder / "model.xml").string();
  int nStopped = 0;
  int nReadBefore = 1;
  for (int polls = 0;; polls = polls + polls / 4 + 1) {
    fPollsLeft = polls;
    const json run =
        Run("NAIVEBAYES y BY good fair late WITH near /TRAININGSAMPLE VARIABLE=train "
            "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) /OUTFILE MODEL='" +
            model + "' /PRINT CLASSIFICATION SUMMARY.");
    if (!fbError) break;
    ++nStopped;
    EXPECT_THAT(Keys(run), ElementsAre("Stopped by the user after ^1 records...")) << polls;
    const int nRead = std::stoi(run["messages"][0]["arguments"][0].get<std::string>());
    EXPECT_GE(nRead, nReadBefore) << polls;
    nReadBefore = nRead;
    EXPECT_THAT(Titles(run), IsEmpty()) << polls;
    for (const std::string& file : FilesLeft()) EXPECT_EQ(file, model) << polls;
  }
  EXPECT_GT(nStopped, 10);
  EXPECT_THAT(FilesLeft(), ElementsAre(model));
}

TEST_F(NaiveBayesFailures, GoOnWithoutPredictorsThatOnlyTestCasesTellApart) {
  const json none = Run("NAIVEBAYES y BY late WITH later /TRAININGSAMPLE VARIABLE=train.");
  EXPECT_FALSE(fbError);
  EXPECT_THAT(Keys(none), ElementsAre("No unique predictors were selected..."));
  const char* reason = "Training Cases Constant";
  const auto excluded = [&](const json& run, const char* type) {
    return Cell(run, "ExcludedPredictors", {reason, type}, {"Predictors"});
  };
  EXPECT_EQ(excluded(none, "Categorical"), json{"late"});
  EXPECT_EQ(excluded(none, "Scale"), json{"later"});
  EXPECT_EQ(Cell(none, "SubsetSummary", {"0"}, {"Predictor Added"}), "(Initial Subset)");
  EXPECT_EQ(Cell(none, "SubsetSummary", {"1"}, {"Predictor Added"}), "no such cell");
  EXPECT_EQ(Cell(none, "Classification", {"Overall Percent"}, {"Percent Correct"}, {"Test"}), 50.0);

  const json all =
      Run("NAIVEBAYES y BY good late WITH later /TRAININGSAMPLE VARIABLE=train "
          "/SUBSET NOSELECTION /PRINT CLASSIFICATION.");
  const std::string dropped = "Predictor ^1 constant in training cases...";
  EXPECT_THAT(Keys(all), ElementsAre(dropped, dropped));
  EXPECT_EQ(all["messages"][0]["arguments"], json{"late"});
  EXPECT_EQ(all["messages"][1]["arguments"], json{"later"});

  const json forced =
      Run("NAIVEBAYES y BY good fair /FORCE FACTORS=late /TRAININGSAMPLE VARIABLE=train.");
  EXPECT_FALSE(fbError);
  EXPECT_THAT(Keys(forced), ElementsAre("Predictor ^1 constant in training cases..."));
  EXPECT_EQ(excluded(forced, "Categorical"), json{"late"});
  const json free = Run("NAIVEBAYES y BY good fair /TRAININGSAMPLE VARIABLE=train.");
  for (const char* column : {"Predictor Added", "Rank", "Pseudo-BIC", "Average Log-Likelihood"}) {
    for (const char* row : {"0", "1", "2"}) {
      EXPECT_EQ(Cell(forced, "SubsetSummary", {row}, {column}),
                Cell(free, "SubsetSummary", {row}, {column}))
          << row << ' ' << column;
    }
  }
}

// A model without predictors has no document; all else that was asked for is there.
TEST_F(NaiveBayesFailures, LoseTheModelFileAloneWhenNothingIsLeftToPutIntoIt) {
  const json run =
      Run("NAIVEBAYES y BY late WITH later /TRAININGSAMPLE VARIABLE=train /OUTFILE MODEL='" +
          (fFolder / "model.xml").string() + "' /SAVE PREDVAL(guess) /PRINT CPS CLASSIFICATION.");
  EXPECT_TRUE(fbError);
  EXPECT_THAT(Errors(run), ElementsAre("No predictor for the model file..."));
  EXPECT_EQ(run["messages"].back()["severity"], "error");
  EXPECT_THAT(Titles(run), ElementsAre("Case Processing Summary", "Classification"));
  EXPECT_THAT(FilesLeft(), IsEmpty());
  EXPECT_EQ(fTable.GetVariable(fTable.ColumnCount() - 1).GetName(), "guess");
}

TEST_F(NaiveBayesFailures, SaySoWhenTrainingCasesLeaveFewerPredictorsThanTheExactSize) {
  const std::string command =
      "NAIVEBAYES y BY good late WITH later /TRAININGSAMPLE VARIABLE=train ";
  const json exact = Run(command + "/SUBSET EXACTSIZE=2.");
  EXPECT_THAT(Keys(exact), Contains("Exact size reduced in training cases..."));
  EXPECT_EQ(Cell(exact, "SelectedPredictors", {"Categorical"}, {"Predictors"}), json{"good"});
  EXPECT_EQ(Cell(exact, "SubsetSummary", {"2"}, {"Predictor Added"}), "no such cell");
  EXPECT_THAT(Keys(Run(command + "/SUBSET MAXSIZE=3.")), IsEmpty());
}

TEST_F(NaiveBayesFailures, WarnThatThereIsNoTestCaseToClassify) {
  const json run = Run("NAIVEBAYES y BY good fair /TRAININGSAMPLE VARIABLE=one.");
  EXPECT_FALSE(fbError);
  EXPECT_THAT(Keys(run), Contains("No valid test cases for classification..."));
  EXPECT_EQ(Cell(run, "Classification", {"Overall Percent"}, {"Percent Correct"}, {"Test"}),
            "no such cell");
}

}  // namespace
