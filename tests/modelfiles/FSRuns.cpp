#include "tests/modelfiles/FSRuns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <regex>
#include <sstream>

#include "common/MissingValue.h"
#include "tests/feature/Tables.h"
#include "tests/modelfiles/StateStreams.h"

namespace {

std::vector<bool> TypesOf(const std::string& predictors) {
  std::vector<bool> types;
  for (const char kind : predictors) types.push_back(kind == 'c');
  return types;
}

// Column 0 is the target, column 1 the weight; of five and more predictors the last is constant,
// the one before it all missing.
Table CasesFor(const std::string& predictors, bool catTarget, std::size_t n) {
  std::mt19937 random(42);
  const auto draw = [&random](unsigned to) { return static_cast<double>(random() % to); };
  Table table(predictors.size() + 2);
  for (std::size_t i = 0; i < n; ++i) {
    const double y = catTarget ? draw(4) - 1.0 : draw(1000) / 7.0;
    table[0].push_back(y);
    table[1].push_back(draw(40) / 8.0 - 0.5);
    for (std::size_t j = 0; j < predictors.size(); ++j) {
      double x = predictors[j] == 'c' ? draw(3 + j) + (y > 1 ? 1.0 : 0.0) : y + draw(90) / 13.0;
      if (predictors[j] == 'c' && j == 1) x = 1000.0 * x - 3000.0;
      const std::size_t fromEnd = predictors.size() < 5 ? 0 : predictors.size() - j;
      if (draw(9) == 0.0 || fromEnd == 2) x = KOVA_SystemMissing;
      if (fromEnd == 1) x = 5.0;
      table[j + 2].push_back(x);
    }
  }
  return table;
}

}  // namespace

FinishedRun::FinishedRun(const std::string& predictors, bool catTarget, bool withTarget,
                         FSStage stage, std::size_t cases)
    : fSettings(TypesOf(predictors), catTarget) {
  fSettings.SetWeightPosition(1);
  fSettings.SetWeightToFreq(MCFSCommon::kAsIs);
  if (cases >= 60) fSettings.SetMaxNCatAsPct(12.0);
  FSFactory factory;
  fpComponent = factory.CreateFSAlgorithm(&fSettings);
  if (stage == FSStage::kNew) return;
  const Table table = CasesFor(predictors, catTarget, cases);
  BlocksOf source(table, 16);
  if (!withTarget) {
    // The target column is read as one more predictor then, and the last predictor not at all.
    std::vector<int> indices;
    std::vector<std::vector<int>> reasons;
    EXPECT_FALSE(fpComponent->CheckPredictorsNoTarget(source, indices, reasons, -1).IsError());
    return;
  }
  EXPECT_TRUE(fpComponent->Accumulate(source, -1).IsOK());
  MCFeature::MCStatus status;
  if (stage >= FSStage::kCheckedConstant) status = fpComponent->CheckPredAllMissConst();
  if (stage >= FSStage::kScreened) status = fpComponent->ScreenPredictors();
  if (stage >= FSStage::kRankedAll) {
    status = fpComponent->SortAndRank(stage == FSStage::kRankedBest ? 1 : 0);
  }
  EXPECT_FALSE(status.IsError());
}

std::vector<std::int64_t> FinishRun(IFSAlgorithm& component, FSStage from) {
  std::vector<std::int64_t> codes = {component.GetStatus().GetErrorCode()};
  if (from < FSStage::kCheckedConstant) {
    codes.push_back(component.CheckPredAllMissConst().GetErrorCode());
  }
  if (from < FSStage::kScreened) codes.push_back(component.ScreenPredictors().GetErrorCode());
  codes.push_back(component.SortAndRank(0).GetErrorCode());
  return codes;
}

std::string DumpOf(const IFSAlgorithm& component) {
  std::ostringstream dump;
  dump.precision(17);
  component.Display(dump);
  for (int c = 0; c < MCFSCommon::kNCriteria; ++c) {
    const auto criterion = static_cast<MCFSCommon::RankCriteria>(c);
    dump << component.ExportOneXML(dump, criterion, 0).GetErrorCode();
  }
  dump << component.ExportAllXML(dump).GetErrorCode();
  return std::regex_replace(dump.str(),
                            std::regex("(Elapsed seconds|0x|<Timestamp)[^\n]*|-(?=nan)"), "");
}

std::string SaveBinary(const IFSAlgorithm& component) {
  BinaryStream out;
  EXPECT_FALSE(component.SaveState(out).IsError());
  return out.Content();
}

std::string SaveXML(const IFSAlgorithm& component) {
  std::ostringstream out;
  EXPECT_FALSE(component.SaveStateXML(out).IsError());
  return out.str();
}

std::unique_ptr<IFSAlgorithm> RestoreBinary(const std::string& state, FSFactory& factory) {
  BinaryStream in(state);
  return factory.RestoreFSAlgorithmFromBinary(in);
}

std::unique_ptr<IFSAlgorithm> RestoreXML(const std::string& state, FSFactory& factory) {
  XMLStream in(state);
  return factory.RestoreFSAlgorithmFromXML(in);
}
