// Composites, the string table, printed numbers and values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <regex>
#include <set>
#include <sstream>

#include "common/MissingValue.h"
#include "host/data/KOVA_Variable.h"
#include "host/output/BpError.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/OutputFormat.h"
#include "host/output/ShowText.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpDataValue.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"
#include "tests/host/output/OutputHost.h"

namespace {

using MCHost::OutputFormat;
using MCHost::OutputText;
using MCHost::ShowText;

std::string ReadFile(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

TEST(OutputFormat, PrintsEachKindOfNumberByItsRule) {
  const struct {
    OutputFormat fFormat;
    double fValue;
    const char* fText;
  } cases[] = {
      {OutputFormat::kCount, 344, "344"},
      {OutputFormat::kCount, 1e15, "1000000000000000"},
      {OutputFormat::kCount, 2.6e301, "2.600e+301"},
      {OutputFormat::kCount, 12.5, "12.5"},
      {OutputFormat::kCount, 1.0 / 3.0, "0.333"},
      {OutputFormat::kCount, 0, "0"},
      {OutputFormat::kPercent, 45.123, "45.1%"},
      {OutputFormat::kPercent, 100, "100.0%"},
      {OutputFormat::kSignificance, 0.049, ".049"},
      {OutputFormat::kSignificance, 0.0005, ".001"},
      {OutputFormat::kSignificance, 0.00049, "< .001"},
      {OutputFormat::kSignificance, 0, "< .001"},
      {OutputFormat::kSignificance, 1, "1.000"},
      {OutputFormat::kCoefficient, 0.05, "0.05"},
      {OutputFormat::kCorrelation, -0.8712, "-.871"},
      {OutputFormat::kCorrelation, -1, "-1.000"},
      {OutputFormat::kCorrelation, -0.0001, ".000"},
      {OutputFormat::kGeneral, 299.55, "299.550"},
      {OutputFormat::kGeneral, 0, "0.000"},
      {OutputFormat::kGeneral, 0.00012, "1.200e-04"},
      {OutputFormat::kGeneral, -2.5e12, "-2.500e+12"},
      {OutputFormat::kGeneral, KOVA_SystemMissing, ""},
      {OutputFormat::kGeneral, std::numeric_limits<double>::quiet_NaN(), ""},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatNumber(c.fValue, c.fFormat), c.fText) << c.fValue;
}

TEST(ShowText, FillsPlaceholdersAndListPatterns) {
  const OutputText list = [] {
    OutputText text = OutputText::Literal("");
    text.fItems = {OutputText::Literal("a"), OutputText::Literal("^1"), OutputText::Literal("c")};
    return text;
  }();
  const OutputText x = OutputText::Literal("x");
  const struct {
    const char* fPattern;
    std::vector<OutputText> fArguments;
    const char* fText;
  } cases[] = {
      {"^2 before ^1", {x, OutputText::Literal("y")}, "y before x"},
      {"^1 twice: ^1", {x}, "x twice: x"},
      {"no ^2 given, 2^n kept", {x}, "no ^2 given, 2^n kept"},
      {"[%1:, ^1:]1", {list}, "a, ^1, c"},
      {"[%1:\n ^1:]1", {list}, "a\n ^1\n c"},
      {"^1 holds [%1: ^1:]2.", {x, list}, "x holds a ^1 c."},
      {"[%1:, ^1", {x}, "[%1:, x"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MCHost::FillPlaceholders(c.fPattern, c.fArguments), c.fText) << c.fPattern;
  }
}

TEST(ShowText, ShowsEntriesLabelsAndKeysWithoutAnEntry) {
  EXPECT_EQ(ShowText(BpString("UserMiss excluded ...")),
            "User-defined missing values are treated as missing.");
  EXPECT_EQ(ShowText(BpComposite("Nothing under ^1...").AddLiteral("this key").Finish()),
            "Nothing under this key...");
  KOVA_Variable sex("sex", 0);
  EXPECT_EQ(ShowText(BpVariable(sex)), "sex");
  sex.SetLabel("Sex of the animal");
  EXPECT_EQ(ShowText(BpVariable(sex)), "Sex of the animal");
  EXPECT_EQ(MCHost::TextId(BpVariable(sex)), "sex");
  sex.GetValueLabels().SetLabel(1.0, "female");
  EXPECT_EQ(ShowText(BpDataValue(sex, 1.0)), "female");
  EXPECT_EQ(MCHost::TextId(BpDataValue(sex, 1.0)), "1");
  EXPECT_EQ(ShowText(BpDataValue(sex, 2.5)), "2.50");
  EXPECT_EQ(ShowText(BpDataValue(sex, 2.125)), "2.125");
}

TEST(ShowText, JoinsTheSublistOfAComposite) {
  BpComposite names("The initial subset contains [%1:, ^1:]1");
  names.Sublist();
  for (const char* name : {"island", "sex"}) names.AddLiteral(name);
  names.EndSublist();
  EXPECT_EQ(ShowText(names.Finish()), "The initial subset contains island, sex.");
  EXPECT_EQ(MCHost::TextId(names.Finish()), "The initial subset contains island, sex");
}

TEST(BpError, SetsTheErrorFlagAtErrorLevelOnly) {
  MCTest::OutputHost host;
  BpError(BpComposite("No predictors were selected."), 2, 2);
  EXPECT_FALSE(host.fSession.CommonBlock().IsErrorSet());
  BpError(BpComposite("Dependent variable constant..."), 2, 3, "detail");
  EXPECT_TRUE(host.fSession.CommonBlock().IsErrorSet());
  const auto& messages = host.fDocument.CurrentRun().fMessages;
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[1].fDetail, "detail");
}

// A short key, with an ellipsis, stands for a sentence that only the string table knows; so does
// whatever is given to the output as a title, a label or a note.
TEST(StringTable, HasAnEntryForEveryShortKeyInTheSources) {
  const std::regex broken("\"\\s*\n\\s*\"");  // a text that continues on the next line
  const std::regex key("\"([A-Z^\\[][^\"\n]*\\.\\.\\.)\"");
  const std::regex label(
      "Bp(?:String|PivotTable \\w+|Composite(?: \\w+)?)\\(\"([^\"\n]*[^.\"\n])\"");
  std::set<std::string> missing;
  int nFound = 0;
  for (const char* folder : {"backend/predselect", "host/cases", "host/command", "operations"}) {
    const auto root = std::filesystem::path(PREDSELECT_SOURCE_DIR) / folder;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      // What a grammar says of its keywords is help, not output.
      const std::string name = entry.path().filename();
      if (entry.path().extension() != ".cpp" || name == "PRSGrammar.cpp") continue;
      const std::string source = std::regex_replace(ReadFile(entry.path()), broken, "");
      for (const std::regex& pattern : {key, label}) {
        const std::sregex_iterator end;
        for (std::sregex_iterator it(source.begin(), source.end(), pattern); it != end; ++it) {
          ++nFound;
          std::string found = (*it)[1];
          for (std::size_t at; (at = found.find("\\n")) != std::string::npos;) {
            found.replace(at, 2, "\n");
          }
          if (!FacSTDictionary().Contains(found)) missing.insert(found);
        }
      }
    }
  }
  EXPECT_THAT(std::vector<std::string>(missing.begin(), missing.end()), testing::IsEmpty());
  EXPECT_GE(nFound, 17);  // the messages of the parser and the drivers alone
}

}  // namespace
