// Runs the scripts in commands/: each states a command over the penguin dictionary, whether it is
// accepted, every message word by word, and what the specifications then hold.
//
//   # A sentence that names the case
//   @macro f island sex          (what the session holds; also @weight column, @split)
//   SELECTPRED species BY !f.
//   => accepted                  (or refused)
//   Warning: ...                 (all messages, in order, with their places)
//   = Predictors = 1 6           (lines that the dump of the specifications must contain)
#include "backend/predselect/command/PRSParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "backend/predselect/command/PRSGrammar.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "host/command/CommandSplitter.h"
#include "host/session/HostBlocks.h"
#include "host/session/HostFunctions.h"
#include "tests/host/command/FakeHost.h"

namespace {

struct Case {
  std::string fName;
  std::vector<std::string> fSettings;
  std::string fCommand;
  std::string fMessages;
  std::vector<std::string> fSpecs;
  bool fbAccepted = false;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.fName; }

std::vector<Case> ReadCases(const std::string& file) {
  std::ifstream in(std::string(PREDSELECT_SOURCE_DIR) + "/tests/backend/commands/" + file);
  std::vector<Case> cases;
  bool isCommand = true;
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with("# ")) {
      cases.push_back({});
      cases.back().fName = line.substr(2);
      isCommand = true;
    } else if (line.starts_with("@")) {
      cases.back().fSettings.push_back(line.substr(1));
    } else if (line.starts_with("=> ")) {
      cases.back().fbAccepted = line == "=> accepted";
      isCommand = false;
    } else if (isCommand && !cases.empty()) {
      cases.back().fCommand += line + "\n";
    } else if (line.starts_with("= ")) {
      cases.back().fSpecs.push_back(line.substr(2));
    } else if (!line.empty()) {
      cases.back().fMessages += line + "\n";
    }
  }
  return cases;
}

void Apply(const std::string& setting, MCTest::FakeHost& host) {
  std::istringstream in(setting);
  std::string word;
  in >> word;
  if (word == "split") host.fSession.CommonBlock().fSplitFile = 1;
  if (word == "weight") {
    int column = -1;
    in >> column;
    host.fTable.SetWeight(column);
  }
  if (word == "macro") {
    std::string name;
    in >> name;
    std::vector<std::string> values;
    for (std::string value; in >> value;) values.push_back(value);
    host.fSession.SetMacro(name, values);
  }
}

class CommandScript : public testing::TestWithParam<Case> {};

TEST_P(CommandScript, IsReadAsStated) {
  const Case& c = GetParam();
  MCTest::FakeHost host;
  for (const std::string& setting : c.fSettings) Apply(setting, host);
  const auto commands = MCHost::SplitCommands(c.fCommand);
  ASSERT_EQ(commands.size(), 1u);
  host.fSession.SetCommand(commands[0].fText, commands[0].fLine, commands[0].fColumn);
  const ProcedureDataSource source;
  PRSValidSpecs specs;
  specs.SetUniVariable(
      AreStringsEqualCase(host.fSession.SystemBlock().fCommandWord.substr(0, 3), "SEL"));
  KOVA_TokenSequence tokens(true);
  PRSParser parser(tokens, specs, source);
  EXPECT_EQ(parser.GetCommandSpecifications(), c.fbAccepted);
  EXPECT_EQ(host.fSession.CommonBlock().IsErrorSet(), !c.fbAccepted);
  if (c.fbAccepted) {
    EXPECT_EQ(host.fSession.CommonBlock().fSplitFile, 0);
  }
  EXPECT_EQ(host.fSink.fSaid, c.fMessages);
  std::ostringstream dump;
  specs.Display(dump);
  for (const std::string& line : c.fSpecs) {
    EXPECT_THAT("\n" + dump.str(), testing::HasSubstr("\n" + line + "\n"));
  }
}

// The name of a test may hold letters and digits only: each word begins with a capital.
std::string NameOf(const testing::TestParamInfo<Case>& info) {
  std::string name;
  bool starts = true;
  for (const char c : info.param.fName) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      name += starts ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    starts = c == ' ';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Variables, CommandScript, testing::ValuesIn(ReadCases("variables.txt")),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(SelectPred, CommandScript, testing::ValuesIn(ReadCases("selectpred.txt")),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(NaiveBayes, CommandScript, testing::ValuesIn(ReadCases("naivebayes.txt")),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Syntax, CommandScript, testing::ValuesIn(ReadCases("syntax.txt")), NameOf);

// Whatever is cut off or left out of a command, it ends in messages or a parse, never in anything
// else, and a refusal always says why.
TEST(CommandParsing, SurvivesEveryDamageToACommand) {
  const std::string whole =
      "NAIVEBAYES species BY island sex WITH \"wing span\" body_mass_g TO year /FORCE FACTORS=sex "
      "/TRAININGSAMPLE PERCENT=70 /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) "
      "/SAVE PREDVAL(pred) PREDPROB(prob:3) /OUTFILE MODEL='m.xml' /PRINT SUMMARY CPS.";
  for (std::size_t from = 0; from < whole.size(); ++from) {
    for (const std::size_t length : {std::size_t{1}, std::size_t{7}, whole.size()}) {
      MCTest::FakeHost host;
      std::string damaged = whole;
      host.fSession.SetCommand(damaged.erase(from, length));
      const ProcedureDataSource source;
      PRSValidSpecs specs;
      specs.SetUniVariable(false);
      KOVA_TokenSequence tokens(true);
      const bool isValid = PRSParser(tokens, specs, source).GetCommandSpecifications();
      EXPECT_EQ(isValid, host.fSink.fSaid.find("Error") == std::string::npos) << damaged;
    }
  }
}

// The specifications' dump after a command, without the thresholds' digits as they were typed.
std::string SpecsAfter(const std::string& command) {
  MCTest::FakeHost host;
  host.fSession.SetCommand(command);
  const ProcedureDataSource source;
  PRSValidSpecs specs;
  specs.SetUniVariable(command.starts_with("SEL"));
  KOVA_TokenSequence tokens(true);
  EXPECT_TRUE(PRSParser(tokens, specs, source).GetCommandSpecifications()) << command;
  EXPECT_EQ(host.fSink.fSaid, "") << command;
  std::ostringstream dump;
  specs.Display(dump);
  return std::regex_replace(dump.str(), std::regex("[^\n]* as typed = [^\n]*\n"), "");
}

TEST(CommandParsing, TakesATypedDefaultLikeNothing) {
  int nTyped = 0;
  for (const bool univariable : {true, false}) {
    CommandDescriptor command = PRSGrammar::NewCommand(univariable);
    PRSGrammar::Declare(command, univariable);
    const std::string bare = command.GetName() + " species BY island sex year";
    const std::string expected = SpecsAfter(bare + ".");
    for (const SubComDescriptor& subCom : command.GetSubComs()) {
      // To name SCREENING at all is what switches it on in a classifier.
      if (!univariable && subCom.GetName() == "SCREENING") continue;
      for (const ParamDescriptor& param : subCom.GetParams()) {
        // SAVE's defaults are those of its own keywords.
        if (param.GetDefaultText().empty() || subCom.GetName() == "SAVE") continue;
        std::string typed =
            bare + " /" + subCom.GetName() + " " + param.GetName() + "=" + param.GetDefaultText();
        for (const ParamDescriptor& qualifier : param.GetQualifDescs()) {
          typed += "(" + qualifier.GetName() + "=" + qualifier.GetDefaultText() + ")";
        }
        EXPECT_EQ(SpecsAfter(typed + "."), expected) << typed;
        ++nTyped;
      }
    }
  }
  EXPECT_EQ(nTyped, 21);
}

}  // namespace
