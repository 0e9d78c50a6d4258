// What a command says when its defaults, or the weights, would mislead in silence.
#include <gmock/gmock.h>

#include <limits>

#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;

constexpr const char* kMemory = "Memory of ^1 KB holds ^2 of ^3 training cases: ^4, ^5...";
constexpr const char* kWeights = "Weights of ^1 cases rounded to zero: ^2, ^3, ^4, ^5...";

class Warnings : public MCTest::CommandTest {
 protected:
  // The arguments of each warning of that key.
  static std::vector<json> ArgumentsOf(const json& run, const char* key) {
    std::vector<json> arguments;
    for (const json& message : run["messages"]) {
      if (message["key"] != key) continue;
      EXPECT_EQ(message["severity"], "warning");
      arguments.push_back(message["arguments"]);
    }
    return arguments;
  }
};

TEST_F(Warnings, CountTheCasesThatTheEnginesRoundingOfWeightsRemoves) {
  // The second rounds to 1, as the engines round.
  const std::vector<double> weights = {
      0.5, 0.49999999999999994, 0.4, 0.1, 0, -1, 2, std::numeric_limits<double>::quiet_NaN()};
  fTable.AddStrings("y", {"a", "b", "a", "b", "a", "b", "a", "b"});
  fTable.AddStrings("x", {"u", "v", "v", "u", "u", "v", "v", "u"});
  const int fractional = fTable.AddNumbers("w", weights);
  const int whole = fTable.AddNumbers("n", {1, 1, 0, 0, 0, 0, 2, 0});
  for (const char* command : {"SELECTPRED y BY x.", "NAIVEBAYES y BY x.",
                              "NAIVEBAYES y BY x /SUBSET NOSELECTION /SAVE PREDVAL."}) {
    SCOPED_TRACE(command);
    fTable.SetWeightVarIndex(fractional);
    const json run = Run(command);
    EXPECT_THAT(ArgumentsOf(run, kWeights),
                testing::ElementsAre(json{"2", "5", "0.5", "3.5", "10"}));
    EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"Valid"}, {"Unweighted N"}), 3.0);
    EXPECT_EQ(Cell(run, "CaseProcessingSummary", {"Valid"}, {"N"}), 4.0);
    fTable.SetWeightVarIndex(whole);
    EXPECT_THAT(ArgumentsOf(Run(command), kWeights), testing::IsEmpty());
  }
}

TEST_F(Warnings, NameTheLeastMemoryThatHoldsTheTrainingCases) {
  MCTest::Strings y;
  MCTest::Strings x;
  std::vector<double> z;
  std::vector<double> train;
  for (int i = 0; i < 1001; ++i) {
    y.push_back(i % 3 == 0 ? "a" : "b");
    x.push_back(i % 7 < 3 ? "u" : "v");
    z.push_back(i % 11);
    train.push_back(i < 701 ? 1 : 0);
  }
  fTable.AddStrings("y", y);
  fTable.AddStrings("x", x);
  fTable.AddNumbers("z", z);
  fTable.AddNumbers("train", train);
  const auto warnings = [this](const std::string& options) {
    return ArgumentsOf(Run("NAIVEBAYES y BY x WITH z " + options + "."), kMemory);
  };
  // 40 bytes a case.
  EXPECT_THAT(warnings("/CRITERIA MEMALLOCATE=4.5"),
              testing::ElementsAre(json{"4.5", "115", "1001", "1000", "40"}));
  EXPECT_THAT(warnings("/CRITERIA MEMALLOCATE=39"), testing::SizeIs(1));
  EXPECT_THAT(warnings("/CRITERIA MEMALLOCATE=40"), testing::IsEmpty());
  EXPECT_THAT(warnings("/CRITERIA MEMALLOCATE=4 /SUBSET NOSELECTION"), testing::IsEmpty());
  const std::string split = "/TRAININGSAMPLE VARIABLE=train /SUBSET EXACTSIZE=1 /CRITERIA ";
  EXPECT_THAT(warnings(split + "MEMALLOCATE=4"),
              testing::ElementsAre(json{"4", "102", "701", "1000", "28"}));
  EXPECT_THAT(warnings(split + "MEMALLOCATE=28"), testing::IsEmpty());
}

}  // namespace
