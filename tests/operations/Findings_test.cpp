// What a report is told of predictors and models: what the engines have counted, under the labels
// of the data, and only where a report is wanted.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "host/data/MemoryTable.h"
#include "host/output/OutputDocument.h"
#include "operations/BuildModel.h"
#include "operations/DescribeTable.h"
#include "operations/RankPredictors.h"
#include "operations/RunCommands.h"
#include "operations/ScoreTable.h"
#include "operations/StateFile.h"
#include "operations/TableOptions.h"

namespace {

using namespace PredSelect;
using Json = nlohmann::json;

// 40 cases of a target of two classes; "gone" is missing in most, home missing in one.
class Findings : public testing::Test {
 protected:
  Findings() {
    std::vector<std::optional<std::string>> paid, home;
    std::vector<double> age, gone;
    for (int i = 0; i < 40; ++i) {
      paid.push_back(i % 4 == 0 ? "no" : "yes");
      home.push_back(i == 7 ? std::optional<std::string>() : i % 3 == 0 ? "rent" : "own");
      age.push_back(20 + i + (i % 4 == 0 ? 0 : 15));
      gone.push_back(i < 3 ? i : KOVA_SystemMissing);
    }
    fTable.AddStrings("paid", paid);
    fTable.AddStrings("home", home);
    fTable.AddNumbers("age", age);
    fTable.AddNumbers("gone", gone);
    PrepareTable(fTable, {});
    fTable.GetVariable(1).SetLabel("Kind of home");
    fTable.GetVariable(1).GetValueLabels().SetLabel(std::string("own"), "Own home");
    fDocument.fbFindings = true;
  }

  Json Found() const { return Json::parse(fDocument.GetRuns().back().fFindings); }
  static Json Of(const Json& variables, const std::string& name) {
    for (const Json& variable : variables) {
      if (variable["name"] == name) return variable;
    }
    return nullptr;
  }
  static double SumOf(const Json& numbers) {
    double sum = 0.0;
    for (const Json& number : numbers) sum += number.is_array() ? SumOf(number) : double(number);
    return sum;
  }

  MCHost::MemoryTable fTable;
  MCHost::OutputDocument fDocument;
};

}  // namespace

TEST_F(Findings, OfARankingShowEachPredictorBesideTheTarget) {
  ASSERT_EQ(RankPredictors(fTable, fDocument, {.fTarget = "paid"}, {}), Outcome::kCompleted);
  const Json found = Found();
  EXPECT_EQ(found["target"]["categories"], Json({"no", "yes"}));
  EXPECT_EQ(found["target"]["counts"], Json({10.0, 30.0}));
  const Json home = Of(found["predictors"], "home");
  EXPECT_EQ(home["label"], "Kind of home");
  EXPECT_EQ(home["shape"]["shares"]["rows"], Json({"Own home", "rent"}));
  // 14 rent, of whom i = 0, 12, 24, 36 did not pay; 25 own, of whom 6 did not.
  EXPECT_EQ(home["shape"]["shares"]["counts"], Json({{6.0, 19.0}, {4.0, 10.0}}));
  const Json age = Of(found["predictors"], "age");
  EXPECT_EQ(age["shape"]["bins"]["low"], 20.0);
  EXPECT_EQ(SumOf(age["shape"]["bins"]["counts"]), 40.0);
  EXPECT_EQ(age["shape"]["groups"]["stats"][0][1], 38.0);  // 20, 24, ... 56
  EXPECT_GT(double(age["bits"]), 0.0);
  ASSERT_EQ(found["excluded"].size(), 1u);
  EXPECT_EQ(found["excluded"][0]["name"], "gone");
  EXPECT_EQ(found["excluded"][0]["threshold"], 70.0);
}

TEST_F(Findings, OfARankingByBitsAreInTheirOrder) {
  const RankRequest request{.fTarget = "paid", .fBy = RankBy::kBits};
  Ranking ranking;
  ASSERT_EQ(RankPredictors(fTable, fDocument, request, {}, &ranking), Outcome::kCompleted);
  const Json predictors = Found()["predictors"];
  ASSERT_EQ(predictors.size(), ranking.fPredictors.size());
  for (std::size_t i = 0; i < predictors.size(); ++i) {
    EXPECT_EQ(predictors[i]["name"], ranking.fPredictors[i].fName) << i;
    EXPECT_EQ(predictors[i]["rank"], i + 1);
    EXPECT_EQ(predictors[i]["bits"], ranking.fPredictors[i].fBits) << i;
  }
}

TEST_F(Findings, OfAScaleTargetHoldItsMeans) {
  ASSERT_EQ(RankPredictors(fTable, fDocument, {.fTarget = "age"}, {}), Outcome::kCompleted);
  const Json paid = Of(Found()["predictors"], "paid")["shape"]["groups"];
  EXPECT_EQ(paid["of"], "target");
  EXPECT_EQ(paid["rows"], Json({"no", "yes"}));
  EXPECT_EQ(paid["stats"][0][0], 10.0);
  EXPECT_EQ(paid["stats"][0][1], 38.0);
}

TEST_F(Findings, OfAModelAreItsTablesAndHowItDid) {
  const ModelRequest request{.fTarget = "paid", .fTest = 0.25};
  ASSERT_EQ(BuildModel(fTable, fDocument, request, {}), Outcome::kCompleted);
  const Json found = Found();
  EXPECT_NEAR(SumOf(found["target"]["priors"]), 1.0, 1e-12);
  const double test = SumOf(found["confusion"]["test"]);
  const double training = SumOf(found["confusion"]["training"]);
  EXPECT_EQ(test + training, 40.0);
  EXPECT_GT(test, 0.0);
  EXPECT_EQ(found["curves"]["test"]["weight"], test);
  EXPECT_EQ(found["curves"]["training"]["weight"], training);
  ASSERT_EQ(found["excluded"].size(), 1u);
  EXPECT_EQ(found["excluded"][0]["name"], "gone");
  EXPECT_EQ(found["excluded"][0]["threshold"], 70.0);
  const Json& path = found["path"];
  EXPECT_TRUE(path["by_test_data"]);
  EXPECT_EQ(path["chosen"], found["inputs"].size());
  for (const Json& input : found["inputs"]) {
    const std::size_t rows = input["scale"] ? input["cuts"].size() + 1 : input["categories"].size();
    EXPECT_EQ(input["factors"].size(), rows) << input["name"];
    EXPECT_LE(SumOf(input["counts"]), training) << input["name"];
  }
}

TEST_F(Findings, OfADescriptionHoldEachVariableAndWhyItIsTakenSo) {
  fTable.GetVariable(2).SetMeasurementLevel(KOVA_Variable::kScale);
  ASSERT_EQ(DescribeTable(fTable, fDocument, {}), Outcome::kCompleted);
  const Json variables = Found()["variables"];
  ASSERT_EQ(variables.size(), 4u);
  const Json home = Of(variables, "home");
  EXPECT_EQ(home["missing"], 1.0);
  EXPECT_EQ(home["reason"], "text");
  EXPECT_EQ(home["categories"].dump(), R"([["Own home",25.0],["rent",14.0]])");
  const Json age = Of(variables, "age");
  EXPECT_EQ(age["reason"], "given");
  EXPECT_EQ(SumOf(age["numbers"]["counts"]), 40.0);
  EXPECT_EQ(age["numbers"]["low"], 20.0);
  EXPECT_EQ(age["numbers"]["high"], 74.0);
}

TEST_F(Findings, OfPredictionsCountWhatWasPredicted) {
  const std::string path = testing::TempDir() + "findings" + std::to_string(getpid()) + ".bin";
  const RunRequest request{.fCommands = "NAIVEBAYES paid.", .fStatePath = path};
  ASSERT_EQ(RunCommands(fTable, fDocument, request, {}), Outcome::kCompleted);
  const ComponentFile state = LoadState(path);
  std::filesystem::remove(path);
  ASSERT_EQ(ScoreTable(fTable, *state.fpNaive, fDocument, {}, {}), Outcome::kCompleted);
  const Json found = Found();
  EXPECT_EQ(found["cases"], 40);
  EXPECT_EQ(SumOf(found["predicted"]), 40.0);
  EXPECT_EQ(SumOf(found["sureness"]), 40.0);
  EXPECT_NEAR(SumOf(found["means"]), 1.0, 1e-12);
  EXPECT_EQ(SumOf(found["sureness"]) - double(found["sureness"][0]), 40.0);  // of two, one has half
}

TEST_F(Findings, AreOfEachCommandAndOfNoneWhereNoReportIsWanted) {
  const RunRequest request{.fCommands = "SELECTPRED paid.\nNAIVEBAYES paid."};
  ASSERT_EQ(RunCommands(fTable, fDocument, request, {}), Outcome::kCompleted);
  ASSERT_EQ(fDocument.GetRuns().size(), 2u);
  EXPECT_EQ(Json::parse(fDocument.GetRuns()[0].fFindings)["kind"], "ranking");
  EXPECT_EQ(Found()["kind"], "model");
  EXPECT_EQ(Found()["target"]["categories"], Json({"no", "yes"}));
  MCHost::OutputDocument plain;
  ASSERT_EQ(RunCommands(fTable, plain, request, {}), Outcome::kCompleted);
  for (const MCHost::OutputRun& run : plain.GetRuns()) EXPECT_EQ(run.fFindings, "");
}
