#include "backend/predselect/specifications/PRSValidSpecs.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <vector>

#include "common/MCAssert.h"
#include "feature/FSSettings.h"
#include "host/cases/MCStopProcessor.h"
#include "host/cases/UAVarValidSpecs.h"
#include "tests/host/command/FakeHost.h"

namespace {

using MCFSCommon::RankCriteria;

PRSValidSpecs::IntList Ints(const std::vector<int>& values) {
  return std::make_unique<std::vector<int>>(values);
}

PRSValidSpecs::BoolList Bools(const std::vector<bool>& values) {
  return std::make_unique<std::vector<bool>>(values);
}

class PRSValidSpecsTest : public testing::Test {
 protected:
  MCTest::FakeHost fHost;
  PRSValidSpecs fSpecs;
};

TEST_F(PRSValidSpecsTest, DerivesWhatTheSubcommandsMeanTogether) {
  EXPECT_FALSE(fSpecs.GetMultiTrainSamp());
  fSpecs.SetMultiTrainSampInfo(0.0, 0);
  EXPECT_TRUE(fSpecs.GetMultiTrainSamp()) << "variable 0 marks training cases";
  fSpecs.SetMultiTrainSampInfo(0.5, -1);
  EXPECT_TRUE(fSpecs.GetMultiTrainSamp());

  EXPECT_FALSE(fSpecs.GetMultiNoSelection());
  fSpecs.SetMultiSubsetInfo(-1, true, false, 3);
  EXPECT_FALSE(fSpecs.GetMultiNoSelection()) << "an exact size is a selection";
  fSpecs.SetMultiSubsetInfo(-1, false, false, 0);
  EXPECT_TRUE(fSpecs.GetMultiNoSelection());

  EXPECT_TRUE(fSpecs.AddFeaturePrintOption(PRSValidSpecs::kLambda));
  EXPECT_FALSE(fSpecs.AddFeaturePrintOption(PRSValidSpecs::kLambda));
  EXPECT_EQ(fSpecs.GetFeaturePrintOptions().size(), 1u);
}

TEST_F(PRSValidSpecsTest, RefusesListsOfDifferentLengths) {
  const auto previous = MCCommon::SetAssertionHandler(
      [](const char* text, const char*) { throw std::logic_error(text); });
  EXPECT_THROW(fSpecs.SetPredictList(Ints({1, 2}), Bools({true})), std::logic_error);
  EXPECT_THROW(fSpecs.SetForcePredList(nullptr, Bools({true})), std::logic_error);
  EXPECT_EQ(fSpecs.GetNPredictVars(), 0);
  MCCommon::SetAssertionHandler(previous);
}

TEST_F(PRSValidSpecsTest, CompletesTheEngineSettingsOfARankingCommand) {
  fHost.fTable.SetWeight(7);
  fSpecs.SetDependVar(0, true);
  fSpecs.SetKOVAWeightVar(7);
  fSpecs.SetPredictList(Ints({1, 2, 6}), Bools({true, false, true}));
  fSpecs.SetScreenOptions(true, 60.0, 80.0, 50.0, 0.01, 0.5);
  fSpecs.SetUniCriteria(0, static_cast<RankCriteria>(1), 0.05, 0, 0.5);
  fSpecs.AddFeaturePrintOption(PRSValidSpecs::kPearsonChiSquare);
  EXPECT_EQ(fSpecs.GetUniSize(), 0) << "not settled yet";
  fSpecs.CompleteSpecs();

  const UAVarValidSpecs& record = *fSpecs.GetVarValidSpecsPtr();
  EXPECT_EQ(record.GetNRecordVars(), 5);
  EXPECT_EQ(record.GetRecVarIndex(0), 0);
  EXPECT_EQ(record.GetRecVarIndex(7), 1);
  EXPECT_EQ(record.GetRecVarIndex(6), 4);
  EXPECT_TRUE(record.IsUserMissingExcluded());
  EXPECT_EQ(fSpecs.GetStopProcessorPtr()->GetLimitSeconds(), 30.0);

  ASSERT_NE(fSpecs.GetFeatureSettingsPtr(), nullptr);
  FSSettings& settings = *fSpecs.GetFeatureSettingsPtr();
  EXPECT_EQ(settings.GetNPredictors(), 3);
  EXPECT_FALSE(settings.IsCatPredictor(1));
  EXPECT_TRUE(settings.IsCatTarget());
  EXPECT_EQ(settings.GetTargetPosition(), 0);
  EXPECT_EQ(settings.GetWeightPosition(), 1);
  EXPECT_DOUBLE_EQ(settings.GetMaxPctMiss(), 60.0);
  EXPECT_DOUBLE_EQ(settings.GetMaxNCatAsPct(), 50.0);
  EXPECT_EQ(settings.GetMinStddev(), 0.5);
  EXPECT_TRUE(settings.GetCriterion(static_cast<RankCriteria>(0)));
  EXPECT_TRUE(settings.GetCriterion(static_cast<RankCriteria>(1)));
  EXPECT_EQ(fSpecs.GetUniSize(), 3);
}

TEST_F(PRSValidSpecsTest, LeavesThresholdsAloneWhileScreeningIsOff) {
  fSpecs.SetDependVar(5, false);
  fSpecs.SetScreenOptions(false, 60.0, 80.0, 50.0, 0.01, 0.5);
  fSpecs.CompleteSpecs();
  const FSSettings& settings = *fSpecs.GetFeatureSettingsPtr();
  EXPECT_DOUBLE_EQ(settings.GetMaxPctMiss(), 70.0);
  EXPECT_EQ(settings.GetNPredictors(), 0) << "no list was given";
  EXPECT_FALSE(settings.IsCatTarget());
}

}  // namespace
