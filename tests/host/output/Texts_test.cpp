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
#include "host/output/AddNotes.h"
#include "host/output/BpError.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/OutputFormat.h"
#include "host/output/ShowText.h"
#include "host/output/TellApart.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpDataValue.h"
#include "host/output/pivot/BpPivotTable.h"
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
      {OutputFormat::kPValue, 0.049, ".049"},
      {OutputFormat::kPValue, 0.001, ".001"},
      {OutputFormat::kPValue, 0.00099, "9.9e-04"},
      {OutputFormat::kPValue, 3.14e-42, "3.1e-42"},
      {OutputFormat::kPValue, 0, "0"},
      {OutputFormat::kPValue, 1, "1.000"},
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
  const OutputText one = OutputText::Literal("1");
  const OutputText many = OutputText::Literal("60");
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
      {"^1 {1:case|cases}, ^2 {2:second|seconds}", {one, many}, "1 case, 60 seconds"},
      {"{2:^2 is one|^1 of ^2}; {1:one|{more}", {x, many}, "x of 60; {more"},
      {"{1:case} {x:a|b} {2:a|b} {1:a|b", {x}, "{1:case} {x:a|b} {2:a|b} {1:a|b"},
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

TEST(TellApart, PutsTheNameBehindALabelThatAnotherOneIsShownBy) {
  MCTest::OutputHost host;
  const std::pair<const char*, const char*> variables[] = {
      {"a", "Length"}, {"b", "Length"}, {"c", "Length (a)"}, {"d", "e"},
      {"e", ""},       {"f", "f"},      {"g", "Width"}};
  std::vector<OutputText> texts;
  for (const auto& [name, label] : variables) {
    KOVA_Variable variable(name, 0);
    variable.SetLabel(label);
    texts.push_back(BpVariable(variable));
    host.fTable.AddVariable(variable);
  }
  std::vector<OutputText> shown = texts;
  shown.push_back(OutputText::Value("1", "yes"));
  shown.push_back(OutputText::Value("2", "yes"));
  shown.push_back(OutputText::Value("1", "Length"));
  MCHost::TellApart(shown);
  std::vector<std::string> seen;
  for (const OutputText& text : shown) seen.push_back(ShowText(text));
  EXPECT_THAT(seen, testing::ElementsAre("Length (a)", "Length (b)", "Length (a) (c)", "e (d)", "e",
                                         "f", "Width", "yes (1)", "yes (2)", "Length"));
  // Alone in a table, a message and a note.
  BpPivotTable table("Ranking", "Ranking");
  table.Caption(BpComposite("Dependent Variable ^1").Add(texts[0]).Finish());
  table.Show();
  BpError(BpComposite("^1").Add(texts[1]), 2, 2);
  AddNotes(4, texts[6], texts[0]);
  const MCHost::OutputRun& run = host.fDocument.GetRuns()[0];
  EXPECT_EQ(run.fTables[0].fCaption->fArguments[0].fLabel, "Length (a)");
  EXPECT_EQ(run.fMessages[0].fText.fArguments[0].fLabel, "Length (b)");
  EXPECT_EQ(run.fNotes[0].fTitle.fLabel, "Width");
  EXPECT_EQ(run.fNotes[0].fText.fLabel, "Length (a)");
}

TEST(BpError, SetsTheErrorFlagAtErrorLevelOnly) {
  MCTest::OutputHost host;
  MCHost::RaiseMessage(MCHost::OutputMessage::kWarning, "No predictors were selected.");
  EXPECT_FALSE(host.fSession.CommonBlock().IsErrorSet());
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, "File cannot be written: ^1", {"m.xml"},
                       "detail");
  EXPECT_TRUE(host.fSession.CommonBlock().IsErrorSet());
  const auto& messages = host.fDocument.CurrentRun().fMessages;
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(ShowText(messages[1].fText), "A file could not be written: m.xml");
  EXPECT_EQ(messages[1].fDetail, "detail");
}

// The string literals of a source that look like a text, and those that are handed to what shows
// texts. What only developers read (comments, assertions) is left out.
std::vector<std::string> TextsIn(std::string source, const std::regex& text) {
  const std::regex unread("//[^\n]*|Assert\\([^;]*;");
  const std::regex broken("\"\\s*\n\\s*\"");  // a text that continues on the next line
  const std::regex literal("(\\w*)\\(?\"((?:[^\"\\\\\n]|\\\\.)*)\"");
  const std::regex shows("BpString|BpComposite|KeyText|Lookup|table|\\w+Dimension");
  source = std::regex_replace(std::regex_replace(source, unread, ""), broken, "");
  std::vector<std::string> texts;
  const std::sregex_iterator end;
  for (std::sregex_iterator it(source.begin(), source.end(), literal); it != end; ++it) {
    std::string found = std::regex_replace((*it)[2].str(), std::regex("\\\\n"), "\n");
    found = std::regex_replace(found, std::regex("\\\\\""), "\"");
    const bool isShown = std::regex_match((*it)[1].str(), shows) && !found.empty();
    if (isShown || std::regex_match(found, text)) texts.push_back(found);
  }
  return texts;
}

std::vector<std::filesystem::path> SourcesUnder(const char* place) {
  const std::filesystem::path root = std::filesystem::path(PREDSELECT_SOURCE_DIR) / place;
  if (std::filesystem::is_regular_file(root)) return {root};
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string ending = entry.path().extension();
    if (ending == ".cpp" || ending == ".h") files.push_back(entry.path());
  }
  return files;
}

TEST(StringTable, HasAnEntryForEveryTextInTheSources) {
  // Several words, or an ending that only texts have; words of the command language are capitals.
  const std::regex anyText("(?=[^]*(?:[a-z]{2}|\\^\\d))(?:[^]* [^]*|[^]*(?:\\.\\.\\.|:))");
  const std::regex shortKey("[A-Z^\\[][^]*\\.\\.\\.");
  const struct {
    const char* fPlace;
    const std::regex& fText;
  } places[] = {{"backend/predselect", anyText},
                {"host/cases", anyText},
                {"host/command", anyText},
                {"host/output", anyText},
                {"feature/StatusMessages.cpp", anyText},
                {"naivebayes/StatusMessages.cpp", anyText},
                {"operations", shortKey}};
  // Help, the layout of help, names of fields for programs, and dumps for debugging are no output.
  const std::set<std::string> exempt{"PRSGrammar.cpp", "CommandHelp.cpp", "TableRecords.cpp",
                                     "PRSUniFactoryDisplay.cpp", "PRSValidSpecsDisplay.cpp"};
  std::set<std::string> missing;
  for (const auto& place : places) {
    std::size_t nFound = 0;
    for (const std::filesystem::path& file : SourcesUnder(place.fPlace)) {
      if (exempt.contains(file.filename())) continue;
      for (const std::string& text : TextsIn(ReadFile(file), place.fText)) {
        ++nFound;
        if (!FacSTDictionary().Contains(text)) missing.insert(text);
      }
    }
    EXPECT_GE(nFound, 4u) << place.fPlace;
  }
  EXPECT_THAT(missing, testing::IsEmpty());
  EXPECT_THAT(
      TextsIn("f(\"no ^1 entry\"); g(\"kept\");\nBpString(\"One\") KeyText(x ? \"a text\" : 0)",
              anyText),
      testing::ElementsAre("no ^1 entry", "One", "a text"));
}

}  // namespace
