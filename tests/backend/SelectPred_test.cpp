// Whole SELECTPRED commands over small tables in memory, as their JSON documents tell them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
