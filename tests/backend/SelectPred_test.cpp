// Whole SELECTPRED commands over small tables in memory, as their JSON documents tell them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "feature/FSCriterion.h"
#include "host/output/FacSTDictionary.h"
#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;
using MCTest::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

class SelectPred : public MCTest::CommandTest {
 protected:
  // A 2 x 2 table of 10 0 / 0 10 (X2 = 20), an unrelated and a constant predictor, and numbers.
  void FillTable() {
    Strings target;
    Strings same;
    Strings other;
    std::vector<double> near;
    std::vector<double> flat;
    for (int i = 0; i < 20; ++i) {
      target.push_back(i < 10 ? "no" : "yes");
      same.push_back(i < 10 ? "a" : "b");
      other.push_back(i % 2 == 0 ? "c" : "d");
      near.push_back((i < 10 ? 0.0 : 5.0) + 0.5 * (i % 5));
      flat.push_back(1.5);
    }
    fTable.AddStrings("target", target);
    fTable.AddStrings("same", same);
    fTable.AddStrings("other", other);
    fTable.AddNumbers("near", near);
    fTable.AddNumbers("flat", flat);
  }
};

TEST_F(SelectPred, RanksCategoricalPredictorsOfACategoricalTarget) {
  FillTable();
  const json run =
      Run("SELECTPRED target BY same other /CRITERIA SIZE=1 SHOWUNSELECTED=1 /MACROVAR FACTORS=f "
          "/PRINT CPS EXCLUDED SUMMARY(PEARSONCHISQ LRCHISQ) SELECTED /PLOT SUMMARY.");
  EXPECT_THAT(Titles(run),
              ElementsAre("Case Processing Summary", "Predictor Summary", "Selected Predictors"));
  EXPECT_THAT(Keys(run), ElementsAre("No predictors excluded ..."));
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Selected", "same"}, {"Pearson Chi-Square", "Value"}),
            20.0);
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Selected", "same"}, {"Pearson Chi-Square", "Rank"}),
            1.0);
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Unselected", "other"}, {"Pearson Chi-Square", "df"}),
            1.0);
  EXPECT_EQ(Cell(run, "SelectedPredictors", {"Categorical"}, {"Predictors"}), json{"same"});
  EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"target", "yes"}, {"N"}), 10.0);
  EXPECT_EQ(run["charts"][0]["vegalite"]["data"]["values"].size(), 2u);
  ASSERT_NE(fpSession->FindMacro("f"), nullptr);
  EXPECT_THAT(*fpSession->FindMacro("f"), ElementsAre("same"));
  EXPECT_FALSE(fbError);
}

TEST_F(SelectPred, DecodesTheReasonsOfExclusionForEachLevel) {
  FillTable();
  const json run =
      Run("SELECTPRED target BY same WITH near flat /SCREENING CV=0.9 /PRINT EXCLUDED SUMMARY.");
  EXPECT_EQ(Cell(run, "ExcludedPredictors", {"Scale", "All Cases Constant"}, {"Predictors"}),
            json{"flat"});
  EXPECT_EQ(
      Cell(run, "ExcludedPredictors", {"Scale", "Coefficient Of Variation < 0.9"}, {"Predictors"}),
      json{"near"});
  EXPECT_EQ(run["tables"][0]["caption"], "Screening performed in displayed order ...");
}

TEST_F(SelectPred, ShowsFOfScalePredictorsBesideChiSquareInAMixedSet) {
  FillTable();
  const json run = Run("SELECTPRED target BY same WITH near /PRINT SUMMARY.");
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Selected", "near"}, {"F", "df2"}), 18.0);
  EXPECT_TRUE(Cell(run, "PredictorSummary", {"Selected", "near"}, {"Pearson Chi-Square", "Rank"})
                  .is_number());
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Selected", "near"}, {"Pearson Chi-Square", "df"}),
            "no such cell");
}

TEST_F(SelectPred, RanksBothKindsAgainstAScaleTarget) {
  FillTable();
  const json run = Run("SELECTPRED near (MLEVEL=S) BY target same WITH flat /PRINT SUMMARY.");
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Selected", "target"}, {"F", "df2"}), 18.0);
  std::vector<double> twice;
  for (int i = 0; i < 20; ++i) twice.push_back(2.0 * ((i < 10 ? 0.0 : 5.0) + 0.5 * (i % 5)));
  fTable.AddNumbers("twice", twice);
  const json correlated = Run("SELECTPRED near (MLEVEL=S) WITH twice /PRINT SUMMARY.");
  EXPECT_NEAR(
      Cell(correlated, "PredictorSummary", {"Selected", "twice"}, {"Pearson Correlation", "Value"})
          .get<double>(),
      1.0, 1e-14);
}

TEST_F(SelectPred, ShowsEffectsOnDemandAlone) {
  FillTable();
  EXPECT_THAT(Titles(Run("SELECTPRED target BY same other WITH near.")),
              testing::Not(testing::Contains("Predictor Effects")));
  const json run = Run(
      "SELECTPRED target BY same other WITH near flat /CRITERIA SHOWUNSELECTED=1 /PRINT EFFECTS.");
  EXPECT_THAT(Titles(run), ElementsAre("Predictor Effects"));
  const auto cell = [&run](const char* row, const json& column) {
    return Cell(run, "PredictorEffects", {row}, column);
  };
  EXPECT_EQ(cell("same", {"Test", "Type"}), "X²");
  EXPECT_EQ(cell("same", {"Test", "df"}), 1.0);
  EXPECT_EQ(cell("near", {"Test", "df"}), json({"1", "18"}));
  EXPECT_NEAR(cell("same", {"Test", "Log10 p"}).get<double>(), std::log10(std::erfc(std::sqrt(10))),
              1e-12);
  // Three predictors were ranked, near the best of them.
  EXPECT_NEAR(cell("same", {"Test", "Adjusted p", "Benjamini-Hochberg"}).get<double>(),
              1.5 * std::erfc(std::sqrt(10)), 1e-15);
  EXPECT_NEAR(cell("same", {"Test", "Adjusted p", "Holm"}).get<double>(),
              2.0 * std::erfc(std::sqrt(10)), 1e-15);
  EXPECT_EQ(cell("same", {"Effect", "Bits"}), 1.0);
  EXPECT_EQ(cell("near", {"Effect", "Bits"}), 1.0);
  EXPECT_EQ(cell("near", {"Effect", "Bias-Corrected V"}), "no such cell");
  EXPECT_EQ(cell("other", {"Effect", "Correlation"}), "no such cell") << "a column without a use";
  EXPECT_EQ(cell("near", {"Effect", "Missing"}), 0.0);
}

// Twenty values from 0 to 19 in ten bins of width 1.9, (1.9, 3.8] and so on: the first holds 0 and
// 1, the last 18 and 19, each other two values too. A case without a target or value counts
// nowhere.
TEST_F(SelectPred, CountsScaleVariablesInBinsForTheMutualInformation) {
  std::vector<double> steps;
  std::vector<double> weights;
  Strings parity;
  for (int i = 0; i < 20; ++i) {
    steps.push_back(i);
    weights.push_back(i < 18 ? 1.0 : 0.4);
    parity.push_back(i / 2 % 2 == 0 ? "even" : "odd");
  }
  steps.push_back(std::nan(""));
  parity.push_back("even");
  weights.push_back(3.0);
  steps.push_back(7.0);
  parity.push_back(std::nullopt);
  weights.push_back(1.0);
  fTable.AddNumbers("steps", steps);
  fTable.AddStrings("parity", parity);
  const int weight = fTable.AddNumbers("w", weights);
  const auto bits = [this](const std::string& command) {
    const json run = Run(command);
    return Cell(run, "PredictorEffects", run["tables"][0]["cells"][0]["row"], {"Effect", "Bits"})
        .get<double>();
  };
  EXPECT_NEAR(bits("SELECTPRED parity WITH steps /CRITERIA SHOWUNSELECTED=1 /PRINT EFFECTS."), 1.0,
              1e-12);
  EXPECT_NEAR(
      bits("SELECTPRED steps (MLEVEL=S) BY parity /CRITERIA SHOWUNSELECTED=1 /PRINT EFFECTS."), 1.0,
      1e-12);
  // By weight the last bin is not there: nine of two cases, five even and four odd.
  fTable.SetWeightVarIndex(weight);
  const double entropy = -5.0 / 9 * std::log2(5.0 / 9) - 4.0 / 9 * std::log2(4.0 / 9);
  EXPECT_NEAR(bits("SELECTPRED parity WITH steps /CRITERIA SHOWUNSELECTED=1 /PRINT EFFECTS."),
              entropy, 1e-12);
}

TEST_F(SelectPred, NotesWhyAnEffectLacksANumberOrItsTestIsDoubtful) {
  FillTable();
  fTable.AddNumbers("split", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
  Strings rare(20, "r");
  rare[0] = "s";
  fTable.AddStrings("rare", rare);
  const json run =
      Run("SELECTPRED target BY rare WITH split /SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=1 "
          "/PRINT "
          "EFFECTS.");
  EXPECT_EQ(Cell(run, "PredictorEffects", {"split"}, {"Test", "Log10 p"}), nullptr);
  EXPECT_EQ(Cell(run, "PredictorEffects", {"split"}, {"Test", "Adjusted p", "Holm"}), 0.0);
  std::vector<std::string> notes;
  for (const json& cell : run["tables"][0]["cells"]) {
    for (const json& note : cell["notes"]) {
      const std::string text = run["tables"][0]["footnotes"][note.get<std::size_t>()];
      notes.push_back(cell["row"][0].get<std::string>() + ": " + text.substr(0, 22));
    }
  }
  EXPECT_THAT(notes, testing::UnorderedElementsAre("split: F could not be compute",
                                                   "split: No interval can be giv",
                                                   "rare: Of the expected counts"));
}

// The first question is that of the pass that ranks, the second that of the one that counts bins.
TEST_F(SelectPred, ShowsNothingWhenStoppedWhileItCountsBins) {
  FillTable();
  fPollsLeft = 0;
  int polls = 0;
  json run;
  do {
    fPollsLeft = polls++;
    run = Run("SELECTPRED target WITH near /PRINT EFFECTS.");
    EXPECT_EQ(fbError, Titles(run).empty()) << polls;
  } while (fbError && polls < 50);
  EXPECT_GT(polls, 2);
  EXPECT_LT(polls, 50);
}

TEST_F(SelectPred, SaysWhatWentWrongInOneClearMessage) {
  FillTable();
  fTable.AddStrings("empty", Strings(20));
  fTable.AddStrings("one", Strings(20, "x"));
  const struct {
    const char* fCommand;
    const char* fKey;
    bool fbError;
  } cases[] = {
      {"SELECTPRED target BY other /CRITERIA PCUTOFF=0.01 /PRINT SELECTED.",
       "No predictors were selected.", false},
      {"SELECTPRED target WITH flat /PRINT SUMMARY.", "All predictors missing or constant...",
       false},
      {"SELECTPRED empty BY same /PRINT SUMMARY.", "All cases excluded in Predictor Selection...",
       true},
      {"SELECTPRED one BY same other /PRINT SUMMARY.", "Dependent variable constant...", true},
  };
  for (const auto& c : cases) {
    const json run = Run(c.fCommand);
    EXPECT_THAT(Keys(run), ElementsAre(c.fKey)) << c.fCommand;
    EXPECT_THAT(Titles(run), IsEmpty()) << c.fCommand;
    EXPECT_EQ(fbError, c.fbError) << c.fCommand;
  }
}

TEST_F(SelectPred, StandsTheExcludedTableInForTheResultsWhenNothingIsLeft) {
  FillTable();
  const json run = Run("SELECTPRED target WITH flat /MACROVAR COVARIATES=c /PRINT EXCLUDED.");
  EXPECT_THAT(Titles(run), ElementsAre("Excluded Predictors"));
  ASSERT_NE(fpSession->FindMacro("c"), nullptr);
  EXPECT_THAT(*fpSession->FindMacro("c"), IsEmpty());
}

TEST_F(SelectPred, CountsWeightsBesideCasesAndScalesStatisticsByThem) {
  FillTable();
  fTable.SetWeightVarIndex(fTable.AddNumbers("w", std::vector<double>(20, 3.0)));
  const json run = Run("SELECTPRED target BY same other /PRINT CPS SUMMARY.");
  EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"Valid"}, {"N"}), 60.0);
  EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"Valid"}, {"Unweighted N"}), 20.0);
  EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"target", "no"}, {"Percent"}), 50.0);
  EXPECT_EQ(Cell(run, "PredictorSummary", {"Selected", "same"}, {"Pearson Chi-Square", "Value"}),
            60.0);
}

TEST_F(SelectPred, SaysHowFarAStoppedRunHadCome) {
  FillTable();
  fPollsLeft = 0;
  const json run = Run("SELECTPRED target BY same other /PRINT CPS SUMMARY.");
  EXPECT_THAT(Keys(run), ElementsAre("Stopped by the user after ^1 records..."));
  EXPECT_THAT(Titles(run), IsEmpty());
  EXPECT_TRUE(fbError);
}

TEST(SelectPredTexts, EveryKeyOfTheRankingCriteriaHasItsEntry) {
  const FacSTDictionary texts;
  for (const FSCriterion& criterion : FSCriterion::All()) {
    EXPECT_TRUE(texts.Contains(criterion.fHeading)) << criterion.fHeading;
    for (const FSOutput& output : criterion.fOutputs) {
      EXPECT_TRUE(texts.Contains(output.fHeading)) << output.fHeading;
      EXPECT_TRUE(output.fNoteIfLost == nullptr || texts.Contains(output.fNoteIfLost));
    }
  }
}

TEST_F(SelectPred, LogsWhatTheComponentFoundForWhoDebugs) {
  FillTable();
  display_settings = display_feature_select = true;
  testing::internal::CaptureStderr();
  (void)Run("SELECTPRED target BY same WITH near /PRINT CPS.");
  (void)Run("SELECTPRED target BY same /EXCEPT VARIABLES=same.");
  const std::string log = testing::internal::GetCapturedStderr();
  display_settings = display_feature_select = false;
  for (const char* text :
       {"Top predictor component indices: 1 0\nTop predictor KOVA indices: 3 1\n",
        "Top continuous predictor KOVA indices: 3\nTop continuous predictor critical values: "
        "1.28902e-11\n",
        "chi-square p-value of same: 7.74422e-06 20 1 ", "No predictors excluded in screening...",
        "\nNo predictors available in data...\n"}) {
    EXPECT_THAT(log, testing::HasSubstr(text));
  }
}

}  // namespace
