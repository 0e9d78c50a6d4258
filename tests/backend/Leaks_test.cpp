// Warnings of predictors that promise too much: whole commands over a small table in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <sstream>

#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;
using MCTest::Strings;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kWarning = "Predictors better than they are: ^1, ^2...";

class Leaks : public MCTest::CommandTest {
 protected:
  // A target of two classes in file order; honest predictors beside one of each kind of leak.
  void SetUp() override {
    const int n = 240;
    std::mt19937 random(11);
    Strings y, honest, fewCities, names, codes, pairs;
    std::vector<double> scale, number, copy, size, twice, train;
    for (int i = 0; i < n; ++i) {
      const bool isYes = i >= n / 2;
      y.push_back(isYes ? "yes" : "no");
      honest.push_back(isYes == (random() % 4 != 0) ? "a" : "b");
      fewCities.push_back("city " + std::to_string(random() % 5));
      names.push_back("name " + std::to_string(i % 200));
      codes.push_back(std::string(isYes ? "Y" : "N") + std::to_string(i % 3));
      pairs.push_back("noise " + std::to_string(random() % 60));
      scale.push_back(static_cast<double>(random() % 1000) / 10 + (isYes ? 20 : 0));
      number.push_back(5001 + i);
      copy.push_back(isYes ? 7.5 : -1);
      size.push_back(static_cast<double>(random() % 5000) / 7);
      twice.push_back(2 * size.back() + 3);
      train.push_back(random() % 10 < 7 ? 1 : 0);
    }
    fTable.AddStrings("y", y);
    fTable.AddStrings("honest", honest);
    fTable.AddStrings("few cities", fewCities);
    fTable.AddStrings("the \"name\"", names);
    fTable.AddStrings("code", codes);
    fTable.AddStrings("pairs", pairs);
    fTable.AddNumbers("scale", scale);
    fTable.AddNumbers("number", number);
    fTable.AddNumbers("copy", copy);
    fTable.AddNumbers("size", size);
    fTable.AddNumbers("twice", twice);
    fTable.AddNumbers("train", train);
  }

  // The detail of the one warning of leaks; empty without one.
  static std::string Warned(const json& run) {
    std::string detail;
    for (const json& message : run["messages"]) {
      if (message["key"] != kWarning) continue;
      EXPECT_EQ(detail, "") << "more than one warning";
      detail = message["detail"];
    }
    return detail;
  }

  static std::string LineToPaste(const std::string& detail) {
    std::smatch found;
    return std::regex_search(detail, found, std::regex("/EXCEPT[^]*")) ? found.str() : "";
  }
};

TEST_F(Leaks, AreNamedWithTheirReasonsInOneWarning) {
  const struct {
    const char* fCommand;
    std::vector<const char*> fReasons;
  } cases[] = {
      {"SELECTPRED y BY honest \"few cities\" WITH scale", {}},
      {"SELECTPRED scale BY y honest \"few cities\" WITH size", {}},
      {"NAIVEBAYES y BY honest \"few cities\" WITH scale", {}},
      {"SELECTPRED y BY honest \"the \"\"name\"\"\" code pairs WITH scale number copy",
       {"the \"name\" has 200 categories in 240 cases", "code determines y completely",
        "number runs evenly from 5001 to 5240", "copy determines y completely"}},
      {"SELECTPRED size BY honest WITH scale number twice",
       {"number runs evenly from 5001 to 5240", "twice determines size completely"}},
      {"SELECTPRED copy (MLEVEL=S) BY honest y code",
       {"y determines copy completely", "code determines copy completely"}},
      {"NAIVEBAYES y BY honest \"the \"\"name\"\"\" code pairs WITH scale number copy",
       {"the \"name\" has 200 categories in 240 cases", "code determines y completely",
        "number runs evenly from 5001 to 5240", "copy determines y completely"}},
      // What takes chance for knowledge is named once the model takes it.
      {"NAIVEBAYES y BY honest pairs WITH scale",
       {"pairs has 57 categories in 240 cases: too few each to learn from"}},
      {"NAIVEBAYES y BY honest pairs WITH scale /SUBSET EXACTSIZE=1", {}},
      {"NAIVEBAYES y BY honest pairs code WITH scale size /SUBSET EXACTSIZE=1",
       {"code determines y completely"}},
      {"NAIVEBAYES y BY honest code /TRAININGSAMPLE VARIABLE=train /FORCE COVARIATES=number",
       {"code determines y completely", "number runs evenly from 5001 to 5240",
        "Take out of FORCE: number"}},
  };
  for (const auto& c : cases) {
    const std::string detail = Warned(Run(c.fCommand + std::string(".")));
    for (const char* reason : c.fReasons) EXPECT_THAT(detail, HasSubstr(reason)) << c.fCommand;
    EXPECT_EQ(detail.empty(), c.fReasons.empty()) << c.fCommand << detail;
    EXPECT_THAT(detail, Not(HasSubstr("honest"))) << c.fCommand;
    EXPECT_THAT(detail, Not(HasSubstr("scale"))) << c.fCommand;
  }
}

TEST_F(Leaks, AreGoneOnceTheLineOfTheWarningIsPasted) {
  for (int i = 0; i < 30; ++i) {
    Strings names;
    for (int j = 0; j < 240; ++j) names.push_back(std::to_string(j / 2) + (j % 2 ? "!" : "?"));
    fTable.AddStrings("name of a case " + std::to_string(i), names);
  }
  for (const std::string command : {"SELECTPRED y /SCREENING STATUS=OFF", "NAIVEBAYES y"}) {
    for (std::string except : {"", "/EXCEPT VARIABLES=size twice"}) {
      std::string detail = Warned(Run(command + except + "."));
      EXPECT_THAT(detail, HasSubstr("\nand 14 more like these\n"));
      // The second line leaves out the noise that the first has made room for.
      for (int pasted = 0; pasted < 2 && !detail.empty(); ++pasted) {
        const bool takesPlace =
            detail.find("in the place of the command's own") != std::string::npos;
        EXPECT_EQ(takesPlace, !except.empty()) << detail;
        except = LineToPaste(detail);
        std::istringstream lines(except);
        for (std::string part; std::getline(lines, part);) EXPECT_LE(part.size(), 78u);
        detail = Warned(Run(command + except + "."));
        EXPECT_FALSE(fbError) << except;
      }
      EXPECT_EQ(detail, "") << except;
    }
  }
}

// Nor is there a line for such a name alone.
TEST_F(Leaks, OfANameThatNoCommandCanWriteAreNotInTheLine) {
  Strings names;
  for (int i = 0; i < 240; ++i) names.push_back("case " + std::to_string(i));
  fTable.AddStrings("two\nlines", names);
  for (const std::string except : {"", "/EXCEPT VARIABLES=\"the \"\"name\"\"\" code number copy"}) {
    const std::string detail = Warned(Run("SELECTPRED y /SCREENING STATUS=OFF" + except + "."));
    EXPECT_THAT(detail, HasSubstr("lines has 240 categories in 240 cases"));
    EXPECT_EQ(LineToPaste(detail).empty(), !except.empty()) << detail;
    EXPECT_THAT(detail, Not(testing::EndsWith("\n")));
    EXPECT_THAT(LineToPaste(detail), Not(HasSubstr("lines")));
  }
}

TEST_F(Leaks, AreCountedInCasesWhateverTheirWeight) {
  fTable.SetWeightVarIndex(fTable.AddNumbers("w", std::vector<double>(240, 1000.0)));
  for (const std::string command : {"SELECTPRED", "NAIVEBAYES"}) {
    const std::string detail = Warned(Run(command + " y BY \"the \"\"name\"\"\" code honest."));
    EXPECT_THAT(detail, HasSubstr("200 categories in 240 cases")) << command;
    EXPECT_THAT(detail, HasSubstr("code determines")) << command;
  }
}

}  // namespace
