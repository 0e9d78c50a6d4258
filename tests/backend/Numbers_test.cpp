// Every number that a command takes, at the ends of what a number can be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "backend/predselect/command/PRSGrammar.h"
#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;
using MCTest::Strings;

constexpr const char* kNumbers[] = {
    "0",   "4.9e-324",   "1e-300",     "1",          "2",       "4",       "99.99999999999999",
    "100", "2147483646", "2147483647", "2147483648", "1.7e308", "-1.7e308"};

class Numbers : public MCTest::CommandTest {
 protected:
  void SetUp() override {
    Strings target, good, fair;
    std::vector<double> near, far;
    for (int i = 0; i < 60; ++i) {
      target.push_back(i < 30 ? "no" : "yes");
      good.push_back((i < 30) == (i % 7 != 0) ? "a" : "b");
      fair.push_back((i < 30) == (i % 4 != 0) ? "c" : "d");
      near.push_back((i < 30 ? 0 : 2) + i % 5);
      far.push_back(i % 11);
    }
    fTable.AddStrings("target", target);
    fTable.AddStrings("good", good);
    fTable.AddStrings("fair", fair);
    fTable.AddNumbers("near", near);
    fTable.AddNumbers("far", far);
  }

  // It either shows its tables or has an error that says why not.
  void ExpectToEnd(const std::string& command) {
    const json run = Run(command);
    EXPECT_NE(fbError, run["tables"].empty() ? false : true) << command;
    const json& messages = run["messages"];
    const bool isSaid = std::any_of(messages.begin(), messages.end(), [](const json& message) {
      return message["severity"] == "error";
    });
    EXPECT_EQ(isSaid, fbError) << command;
  }
};

TEST_F(Numbers, OfEverySizeEndInTablesOrAnError) {
  int nParams = 0;
  for (const bool univariable : {true, false}) {
    CommandDescriptor command = PRSGrammar::NewCommand(univariable);
    PRSGrammar::Declare(command, univariable);
    for (const SubComDescriptor& subCom : command.GetSubComs()) {
      for (const ParamDescriptor& param : subCom.GetParams()) {
        const bool isNumber = param.GetKind() == ParamDescriptor::kNumber ||
                              param.GetKind() == ParamDescriptor::kInteger;
        if (!isNumber) continue;
        ++nParams;
        for (const char* number : kNumbers) {
          ExpectToEnd(command.GetName() + " target BY good fair WITH near far /PRINT CPS SUMMARY" +
                      (univariable ? " /PLOT SUMMARY /" : " /") + subCom.GetName() + " " +
                      param.GetName() + "=" + number + ".");
        }
      }
    }
  }
  EXPECT_EQ(nParams, 9 + 14);
  for (const char* number : kNumbers) {
    ExpectToEnd(std::string("NAIVEBAYES target BY good /PRINT CPS /SAVE PREDPROB(p:") + number +
                ").");
  }
}

TEST_F(Numbers, ShowAllUnselectedPredictorsWhenMoreAreAskedForThanThereAre) {
  const std::string command =
      "SELECTPRED target BY good fair WITH near far /PLOT SUMMARY /CRITERIA SIZE=2 SHOWUNSELECTED=";
  const json few = Run(command + "4.");
  EXPECT_EQ(few["charts"][0]["vegalite"]["data"]["values"].size(), 4u);
  EXPECT_EQ(Run(command + "2147483647."), few);
}

}  // namespace
