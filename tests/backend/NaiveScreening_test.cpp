// SCREENING of NAIVEBAYES: whole commands over small tables in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "common/MissingValue.h"
#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;
using MCTest::Strings;
using testing::ElementsAre;
using testing::IsEmpty;

// What a command excluded, as pairs of reason and predictor.
std::vector<std::string> Excluded(const json& run) {
  std::vector<std::string> excluded;
  for (const json& table : run["tables"]) {
    if (table["subtype"] != "ExcludedPredictors") continue;
    for (const json& cell : table["cells"]) {
      for (const json& path : cell["row"]) {
        const std::string reason = path;
        if (reason == "Categorical" || reason == "Scale") continue;
        for (const json& name : cell["value"]) {
          excluded.push_back(reason + ": " + name.get<std::string>());
        }
      }
    }
  }
  std::sort(excluded.begin(), excluded.end());
  return excluded;
}

class ScreeningOfNaiveBayes : public MCTest::CommandTest {
 protected:
  // Predictors for every rule. The first 100 cases are for training; the others undo what the
  // training cases have of each kind.
  void Fill(int n) {
    Strings y, half, same, names, pairs;
    std::vector<double> flat, holes, still, fine, train, weight;
    for (int i = 0; i < n; ++i) {
      const bool isTraining = i < 100;
      y.push_back(i % 2 == 0 ? "a" : "b");
      half.push_back(isTraining && i % 10 != 0 ? std::nullopt
                                               : std::optional("x" + std::to_string(i % 3)));
      same.push_back(isTraining && i != 3 ? "s" : "t" + std::to_string(i % 4));
      names.push_back(isTraining ? std::to_string(i) : "again");
      pairs.push_back("p" + std::to_string(isTraining ? (i < 10 ? i / 10 : i) : 0));
      flat.push_back(3);
      holes.push_back(isTraining && i % 4 != 0 ? KOVA_SystemMissing : i % 7);
      still.push_back(isTraining ? 1000 + 0.001 * (i % 5) : i);
      fine.push_back(i % 9);
      train.push_back(isTraining ? 1 : 0);
      weight.push_back(i % 3 == 0 ? 2 : 1);
    }
    fTable.AddStrings("y", y);
    fTable.AddStrings("half", half);
    fTable.AddStrings("same", same);
    fTable.AddStrings("names", names);
    fTable.AddStrings("pairs", pairs);
    fTable.AddNumbers("flat", flat);
    fTable.AddNumbers("holes", holes);
    fTable.AddNumbers("still", still);
    fTable.AddNumbers("fine", fine);
    fTable.AddNumbers("train", train);
    fWeight = fTable.AddNumbers("w", weight);
  }

  int fWeight = -1;
};

constexpr const char* kPredictors = "y BY half same names pairs WITH flat holes still fine";

TEST_F(ScreeningOfNaiveBayes, ExcludesWhatARankingOfTheTrainingCasesExcludes) {
  const struct {
    const char* fRules;
    std::size_t fNExcluded;  // "flat" among them
  } cases[] = {
      {"STATUS=ON", 7},
      {"PCTMISSING=80", 6},
      {"PCTEQUAL=99.5 PCTUNEQUAL=100", 6},
      {"PCTMISSING=100 CV=0 STDDEV=0.5", 5},
      {"STDDEV=0.5 CV=0.5", 7},
      {"STATUS=OFF", 2},  // what no model can use
  };
  for (const bool isWeighted : {false, true}) {
    for (const auto& c : cases) {
      fTable = MCHost::MemoryTable();
      Fill(100);
      if (isWeighted) fTable.SetWeightVarIndex(fWeight);
      const std::string rules = std::string(" /SCREENING ") + c.fRules;
      const bool isOff = rules.find("OFF") != std::string::npos;
      std::vector<std::string> ranked =
          Excluded(Run(std::string("SELECTPRED ") + kPredictors + rules + " /PRINT EXCLUDED."));
      if (isOff) ranked = {"All Cases Constant: flat", "Training Cases Constant: still"};
      fTable = MCHost::MemoryTable();
      Fill(300);
      if (isWeighted) fTable.SetWeightVarIndex(fWeight);
      const json run = Run(std::string("NAIVEBAYES ") + kPredictors + rules +
                           " /TRAININGSAMPLE VARIABLE=train /PRINT EXCLUDED.");
      EXPECT_EQ(Excluded(run), ranked) << c.fRules;
      EXPECT_FALSE(fbError) << c.fRules;
      if (isWeighted) continue;
      EXPECT_EQ(ranked.size(), c.fNExcluded) << c.fRules;
    }
  }
}

TEST_F(ScreeningOfNaiveBayes, IsOffUnlessAskedForAndBuildsTheModelOfWhatIsLeft) {
  Fill(300);
  const std::string command =
      std::string("NAIVEBAYES ") + kPredictors + " /MACROVAR FACTORS=f COVARIATES=c";
  EXPECT_THAT(Excluded(Run(command + " /PRINT EXCLUDED.")),
              ElementsAre("All Cases Constant: flat"));
  (void)Run(command + " /SCREENING CV=1 /SUBSET NOSELECTION.");
  ASSERT_NE(fpSession->FindMacro("f"), nullptr);
  EXPECT_THAT(*fpSession->FindMacro("f"), ElementsAre("half", "same"));
  EXPECT_THAT(*fpSession->FindMacro("c"), IsEmpty());
}

TEST_F(ScreeningOfNaiveBayes, EndsWhereItTakesWhatTheCommandNeeds) {
  Fill(100);
  const struct {
    const char* fCommand;
    const char* fKey;
    const char* fNames;
  } cases[] = {
      {"y BY half WITH fine /FORCE FACTORS=names same /SCREENING STATUS=ON",
       "Forced predictors screened out: ^1, ^2...", "same, names"},
      {"y BY names /SCREENING PCTEQUAL=50", "All predictors screened out...", nullptr},
      {"y BY names /FORCE COVARIATES=fine /SCREENING PCTEQUAL=50",
       "All possible predictors excluded...", nullptr},
  };
  for (const auto& c : cases) {
    const json run = Run(std::string("NAIVEBAYES ") + c.fCommand + ".");
    EXPECT_THAT(Keys(run), ElementsAre(c.fKey)) << c.fCommand;
    EXPECT_THAT(Titles(run), ElementsAre("Excluded Predictors")) << c.fCommand;
    EXPECT_TRUE(fbError) << c.fCommand;
    if (c.fNames == nullptr) continue;
    EXPECT_EQ(run["messages"][0]["arguments"][0], c.fNames);
  }
}

TEST_F(ScreeningOfNaiveBayes, SparesTheMemoryThatNamesOfCasesWouldTake) {
  const int n = 40000;
  Strings y, names;
  std::vector<double> x;
  for (int i = 0; i < n; ++i) {
    y.push_back("class " + std::to_string(i % 8000));
    names.push_back("name " + std::to_string(i));
    x.push_back(i % 17);
  }
  fTable.AddStrings("y", y);
  fTable.AddStrings("names", names);
  fTable.AddNumbers("x", x);
  const std::string command =
      "NAIVEBAYES y BY names WITH x /PRINT CPS /CRITERIA MEMALLOCATE=100000";
  EXPECT_THAT(Keys(Run(command + ".")),
              ElementsAre("Too many categories for the model: ^1, ^2, ^3..."));
  EXPECT_THAT(Keys(Run(command + " /SCREENING STATUS=ON.")), IsEmpty());
}

}  // namespace
