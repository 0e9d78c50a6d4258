// The result documents of the feature selection component, on tables small enough to compute by
// hand. Numbers are compared at six digits; p-values were computed with SciPy's sf functions.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <regex>
#include <sstream>

#include "common/MissingValue.h"
#include "feature/FSFactory.h"
#include "feature/FSPredictorSet.h"
#include "feature/FSSettings.h"
#include "modelfiles/StateDictionary.h"
#include "modelfiles/VariablesDocument.h"
#include "tests/feature/Tables.h"
#include "tests/modelfiles/FSRuns.h"
#include "tests/modelfiles/Validate.h"

namespace {

using namespace MCFSCommon;

constexpr double kMissing = KOVA_SystemMissing;

// The body of a document: without declaration, header and line ends, fractions at six digits.
std::string Body(const std::string& document) {
  EXPECT_EQ(ValidationErrors(document), "");
  static const std::regex kFrame("^[^]*dtd\">\n|<Header[^]*</Header>|\n *");
  static const std::regex kFraction("-?[0-9]+\\.[0-9]{6,}");
  const std::string whole = std::regex_replace(document, kFrame, "");
  std::string body;
  auto end = whole.cbegin();
  for (std::sregex_iterator it(whole.begin(), whole.end(), kFraction), last; it != last; ++it) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.6g", std::stod(it->str()));
    body.append(end, (*it)[0].first).append(digits);
    end = (*it)[0].second;
  }
  return body.append(end, whole.cend());
}

// A run over a table whose column 0 is the target.
struct Analysis {
  Analysis(const Table& table, FSSettings settings, int nBest = 0)
      : fSettings(std::move(settings)) {
    FSFactory factory;
    fpComponent = factory.CreateFSAlgorithm(&fSettings);
    BlocksOf source(table, 50);
    EXPECT_TRUE(fpComponent->AccumulateAndRank(source, -1, true, nBest).IsOK());
  }
  std::string One(RankCriteria criterion, int nBest = 0, std::int64_t code = 0) const {
    std::ostringstream out;
    EXPECT_EQ(fpComponent->ExportOneXML(out, criterion, nBest).GetErrorCode(), code);
    return Body(out.str());
  }
  std::string All() const {
    std::ostringstream out;
    EXPECT_TRUE(fpComponent->ExportAllXML(out).IsOK());
    return Body(out.str());
  }

  FSSettings fSettings;
  std::unique_ptr<IFSAlgorithm> fpComponent;
};

// Mixed predictors: the target itself, a number, a constant, nothing.
const Table kMixedTable = {{0, 0, 1, 1},
                           {0, 0, 1, 1},
                           {1, 2, 3, 5},
                           {5, 5, 5, 5},
                           {kMissing, kMissing, kMissing, kMissing}};
const std::vector<bool> kMixedTypes = {true, false, true, false};

TEST(FSResultDocuments, AMixedSetAgainstACategoricalTarget) {
  const Analysis run(kMixedTable, FSSettings(kMixedTypes, true));
  EXPECT_EQ(
      run.All(),
      "<FSOutputAll version=\"1.0\" targetType=\"categorical\" predictorSetType=\"mixed\" "
      "numberOfPredictors=\"2\">"
      "<ExcludedPredictors numberOfPredictors=\"2\"><ScreeningCriteria numberOfCriteria=\"7\">"
      "<ScreenCriterion name=\"allMissing\"/><ScreenCriterion name=\"allConst\"/>"
      "<ScreenCriterion name=\"manyMissing\" value=\"70\"/>"
      "<ScreenCriterion name=\"manyConst\" value=\"95\"/>"
      "<ScreenCriterion name=\"manyCategs\" value=\"90\"/>"
      "<ScreenCriterion name=\"manyCategsWithOneCase\" value=\"90\"/>"
      "<ScreenCriterion name=\"smallVar\" value=\"0.001\"/></ScreeningCriteria>"
      "<ExclPredictor predictorIndex=\"2\" predictorType=\"categorical\" "
      "screenCriterion=\"allConst\"/>"
      "<ExclPredictor predictorIndex=\"3\" predictorType=\"continuous\" "
      "screenCriterion=\"allMissing\"/></ExcludedPredictors>"
      "<CriteriaList numberOfCriteria=\"3\"><Criterion name=\"Pearson\"/>"
      "<Criterion name=\"Likelihood\"/><Criterion name=\"F-Statistic\"/></CriteriaList>"
      "<Target targetIndex=\"0\"/>"
      "<Predictor predictorIndex=\"0\" predictorType=\"categorical\">"
      "<CriterionAndRank criterionName=\"Pearson\" criterionValue=\"0.0455003\" "
      "statisticValue=\"4\" df=\"1\" rankOrder=\"0\"/>"
      "<CriterionAndRank criterionName=\"Likelihood\" criterionValue=\"0.0185317\" "
      "statisticValue=\"5.54518\" df=\"1\" rankOrder=\"0\"/></Predictor>"
      "<Predictor predictorIndex=\"1\" predictorType=\"continuous\">"
      "<CriterionAndRank criterionName=\"F-Statistic\" criterionValue=\"0.154846\" "
      "statisticValue=\"5\" df=\"1\" df2=\"2\" rankOrder=\"0\"/>"
      "<CriterionAndRank criterionName=\"Pearson\" criterionValue=\"0.154846\" "
      "rankOrder=\"1\"/>"
      "<CriterionAndRank criterionName=\"Likelihood\" criterionValue=\"0.154846\" "
      "rankOrder=\"1\"/></Predictor></FSOutputAll>");
  EXPECT_EQ(run.One(kPearson),
            "<FSOutputOne version=\"1.0\" predictorSetType=\"mixed\" predictorChoiceType=\"all\" "
            "numberOfPredictors=\"2\"><Criterion name=\"Pearson\"/><Target targetIndex=\"0\"/>"
            "<Predictor predictorIndex=\"0\" predictorType=\"categorical\" "
            "criterionValue=\"0.0455003\" rankOrder=\"0\"/>"
            "<Predictor predictorIndex=\"1\" predictorType=\"continuous\" "
            "criterionValue=\"0.154846\" rankOrder=\"1\"/></FSOutputOne>");
  // The categorical predictor has no F, and comes after the one that has.
  EXPECT_EQ(run.One(kFStat),
            "<FSOutputOne version=\"1.0\" predictorSetType=\"mixed\" predictorChoiceType=\"all\" "
            "numberOfPredictors=\"1\"><Criterion name=\"F-Statistic\"/><Target targetIndex=\"0\"/>"
            "<Predictor predictorIndex=\"1\" predictorType=\"continuous\" "
            "criterionValue=\"0.154846\" rankOrder=\"0\"/></FSOutputOne>");
}

TEST(FSResultDocuments, AMixedSetAgainstAContinuousTarget) {
  const Analysis run({{1, 2, 3, 4}, {0, 0, 1, 1}, {2, 1, 4, 3}, {2, 4, 6, 8}},
                     FSSettings({true, false, false}, false));
  const std::string all = run.All();
  EXPECT_EQ(all.substr(all.find("<Predictor ")),
            "<Predictor predictorIndex=\"0\" predictorType=\"categorical\">"
            "<CriterionAndRank criterionName=\"F-Statistic\" criterionValue=\"0.105573\" "
            "statisticValue=\"8\" df=\"1\" df2=\"2\" rankOrder=\"1\"/></Predictor>"
            "<Predictor predictorIndex=\"1\" predictorType=\"continuous\">"
            "<CriterionAndRank criterionName=\"t-Statistic\" criterionValue=\"0.4\" "
            "corrCoeff=\"0.6\" statisticValue=\"1.06066\" df=\"2\" rankOrder=\"2\"/></Predictor>"
            "<Predictor predictorIndex=\"2\" predictorType=\"continuous\">"
            "<CriterionAndRank criterionName=\"t-Statistic\" criterionValue=\"0\" corrCoeff=\"1\" "
            "statisticValue=\"Missing\" df=\"2\" rankOrder=\"0\"/></Predictor></FSOutputAll>");
  const std::string byT = run.One(kTStat);
  EXPECT_NE(byT.find("<Criterion name=\"t-Statistic\"/>"), std::string::npos);
  EXPECT_EQ(byT.substr(byT.find("<Predictor ")), [&] {
    const std::string byF = run.One(kFStat);
    return byF.substr(byF.find("<Predictor "));
  }());
}

TEST(FSResultDocuments, PureSetsNameNoPredictorTypeAndSpellCramersVTwice) {
  FSSettings settings(2, true, true);
  settings.SetMinStddev(0.5);
  settings.SetDeleteManyMissing(false);
  const Analysis run({{0, 0, 1, 1, 1}, {0, 0, 1, 1, 1}, {0, 0, 0, 0, 1}}, settings);
  EXPECT_EQ(run.One(kCramer).substr(0, run.One(kCramer).find("<Target")),
            "<FSOutputOne version=\"1.0\" predictorSetType=\"categorical\" "
            "predictorChoiceType=\"all\" numberOfPredictors=\"2\"><Criterion name=\"Cramer V\"/>");
  const std::string all = run.All();
  EXPECT_NE(all.find("<ScreeningCriteria numberOfCriteria=\"7\">"), std::string::npos);
  EXPECT_NE(all.find("<ScreenCriterion name=\"smallStdDev\" value=\"0.5\"/></ScreeningCriteria>"),
            std::string::npos);
  EXPECT_EQ(all.find("manyMissing"), std::string::npos);
  EXPECT_NE(all.find("<Predictor predictorIndex=\"0\"><CriterionAndRank criterionName=\"Pearson\""),
            std::string::npos);
  EXPECT_NE(all.find("<CriterionAndRank criterionName=\"Cramer\" criterionValue=\"1\" "
                     "rankOrder=\"0\"/><CriterionAndRank criterionName=\"Lambda\" "
                     "criterionValue=\"1\" rankOrder=\"0\"/></Predictor>"),
            std::string::npos);
}

TEST(FSResultDocuments, DocumentTypesRefuseWhatIsNotTheirs) {
  EXPECT_NE(ValidationErrors("<!DOCTYPE FSOutputOne SYSTEM \"fsoutputonecrit.dtd\"><FSOutputOne/>"),
            "");
  EXPECT_NE(ValidationErrors("<!DOCTYPE FSOutputAll SYSTEM \"fsoutputallcrit.dtd\"><FSOutputAll/>"),
            "");
  EXPECT_NE(ValidationErrors("<!DOCTYPE MCXMLRoot SYSTEM \"savexml.dtd\"><MCXMLRoot/>"), "");
}

TEST(FSResultDocuments, ARuleWithoutAShortNameIsNamedInTheDocument) {
  Table table(3);
  for (int i = 0; i < 20; ++i) {
    table[0].push_back(i % 2);
    table[1].push_back(i < 17 ? i : 17);
    table[2].push_back(i % 3);
  }
  FSSettings settings(2, true, true);
  settings.SetMaxNCatAsPct(100.0);
  settings.SetMinVariation(HUGE_VAL);
  const Analysis run(table, settings);
  // A threshold beyond all numbers has a name, too.
  EXPECT_NE(run.All().find("<ScreenCriterion name=\"smallVar\" value=\"INF\"/>"),
            std::string::npos);
  EXPECT_NE(run.All().find("<ExclPredictor predictorIndex=\"0\" predictorType=\"categorical\" "
                           "screenCriterion=\"manyCategsWithOneCase\"/>"),
            std::string::npos);
  EXPECT_EQ(FSPredictorSet::GetScreenCritName(kManyCategoriesWithOneCase), "");
}

// How many are asked of the ranking and of the document, and what the document says.
TEST(FSResultDocuments, TheChoiceOfTheBest) {
  Table table(5);
  for (int i = 0; i < 24; ++i) {
    table[0].push_back(i % 2);
    for (int j = 1; j <= 4; ++j)
      table[static_cast<std::size_t>(j)].push_back((i * j / 2) % (j + 1));
  }
  struct Case {
    int fRanked, fAsked;
    const char* fChoice;
    const char* fNumberOfPredictors;
    std::int64_t fCode;
  };
  for (const Case& c : {Case{0, 0, "\"all\"", "4", 0}, Case{0, 4, "\"all\"", "4", 0},
                        Case{0, 9, "\"all\"", "4", 80012}, Case{0, -1, "\"all\"", "4", 0},
                        Case{0, 2, "\"numberOfBest\" numberOfBest=\"2\"", "2", 0},
                        Case{3, 0, "\"numberOfBest\" numberOfBest=\"3\"", "3", 0},
                        Case{3, 1, "\"numberOfBest\" numberOfBest=\"1\"", "1", 0},
                        Case{3, 9, "\"numberOfBest\" numberOfBest=\"3\"", "3", 80012}}) {
    const Analysis run(table, FSSettings(4, true, true), c.fRanked);
    const std::string document = run.One(kPearson, c.fAsked, c.fCode);
    EXPECT_EQ(document.substr(0, document.find("<Criterion")),
              "<FSOutputOne version=\"1.0\" predictorSetType=\"categorical\" predictorChoiceType=" +
                  std::string(c.fChoice) + " numberOfPredictors=\"" + c.fNumberOfPredictors +
                  "\">");
  }
}

TEST(FSResultDocuments, NothingIsWrittenBeforeItsStageOrForAnotherCriterion) {
  struct Case {
    FSStage fStage;
    std::int64_t fOne, fAll;
  };
  for (const Case& c : {Case{FSStage::kNew, 6, 6}, Case{FSStage::kAccumulated, 6, 6},
                        Case{FSStage::kScreened, 6, 0}, Case{FSStage::kRankedAll, 80006, 0}}) {
    const FinishedRun run("ccnncn", true, true, c.fStage);
    std::ostringstream one, all;
    EXPECT_EQ(run.fpComponent->ExportOneXML(one, kTStat, 0), MCFeature::MCStatus(c.fOne, false));
    EXPECT_EQ(one.str(), "");
    EXPECT_EQ(run.fpComponent->ExportAllXML(all).GetErrorCode(), c.fAll);
    EXPECT_EQ(all.str().empty(), c.fAll != 0);
    if (c.fStage == FSStage::kScreened) {
      EXPECT_NE(Body(all.str()).find("numberOfPredictors=\"0\">"), std::string::npos);
    }
    run.fpComponent->Cancel();
    EXPECT_EQ(run.fpComponent->ExportOneXML(one, kPearson, 0).GetErrorCode(),
              c.fStage == FSStage::kRankedAll ? 1 : 6);
    EXPECT_EQ(run.fpComponent->ExportAllXML(all).GetErrorCode(), 1);
  }
}

TEST(FSResultDocuments, TransactionsHaveNoTargetColumn) {
  FSSettings settings(1, false, false);
  settings.SetFlagTrInput(true);
  const Analysis run({{1, 2, 3, 4}, {0, 0, 0, 0}, {2, 1, 4, 3}, {1, 2, 3, 4}}, settings);
  EXPECT_EQ(
      run.One(kTStat),
      "<FSOutputOne version=\"1.0\" predictorSetType=\"continuous\" "
      "predictorChoiceType=\"all\" numberOfPredictors=\"1\"><Criterion name=\"t-Statistic\"/>"
      "<Predictor predictorIndex=\"0\" criterionValue=\"0.4\" rankOrder=\"0\"/></FSOutputOne>");
  EXPECT_EQ(run.All().find("<Target"), std::string::npos);
}

TEST(FSResultDocuments, ThresholdsAreThePercentThatWasGiven) {
  const auto shown = [](double percent) {
    FSSettings settings(kMixedTypes, true);
    settings.SetMaxPctMiss(percent);
    std::ostringstream out;
    EXPECT_TRUE(Analysis(kMixedTable, settings).fpComponent->ExportAllXML(out).IsOK());
    const std::string document = out.str();
    std::smatch found;
    EXPECT_TRUE(std::regex_search(document, found, std::regex("manyMissing\" value=\"([^\"]*)")));
    return found[1].str();
  };
  for (const char* typed : {"7", "29", "0.07", "57.3", "0", "100"}) {
    EXPECT_EQ(shown(std::stod(typed)), typed);
  }
  EXPECT_DOUBLE_EQ(std::stod(shown(100.0 / 3.0)), 100.0 / 3.0);
}

TEST(VariablesDocument, NamesTheVariablesBehindIndices) {
  StateDictionary dictionary;
  dictionary.fWeight = "w";
  dictionary.fTarget = {"y", "", false, true, {}, {}};
  dictionary.fPredictors = {{"a", "A < \u00e4", true, false, {}, {"p", "q"}}};
  std::ostringstream out;
  EXPECT_EQ(WriteVariablesDocument(out, dictionary, 3), "");
  EXPECT_EQ(Body(out.str()),
            "<FSVariables version=\"1.0\" numberOfPredictors=\"1\">"
            "<Target targetIndex=\"3\" variableName=\"y\" targetType=\"continuous\"/>"
            "<Weight variableName=\"w\"/><Predictor predictorIndex=\"0\" variableName=\"a\" "
            "variableLabel=\"A &lt; &#228;\" predictorType=\"categorical\" "
            "numberOfCategories=\"2\"/></FSVariables>");
  dictionary.fTarget.fLabel = "\x01";
  EXPECT_NE(WriteVariablesDocument(out, dictionary, 0).find("U+0001"), std::string::npos);
}

}  // namespace
