#include "host/command/Tokenizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/command/CommandSplitter.h"
#include "host/command/KovaVarName.h"

namespace {

using MCHost::SplitCommands;
using MCHost::Tokenize;
using testing::ElementsAre;

// The tokens as one line: w:word q:"name" s:'text' n:number m:!macro, marks as they are.
std::string Shown(const std::string& text) {
  std::string shown;
  for (const TokenInfoObj& token : Tokenize(text, 1, 1)) {
    if (token.fType == TokenInfoObj::kEnd) break;
    static constexpr const char* kMarks[] = {"", "w:", "q:", "s:", "n:", "",  "",
                                             "", "",   "",   "m:", "",   "o:"};
    if (!shown.empty()) shown += ' ';
    shown += kMarks[token.fType] + token.fText;
    if (token.fProblem != TokenInfoObj::kNone) shown += '!';
  }
  return shown;
}

TEST(Tokenizer, ReadsEveryKindOfToken) {
  const struct {
    const char* fText;
    const char* fTokens;
  } cases[] = {
      {"SELECTPRED y BY a.", "w:SELECTPRED w:y w:BY w:a"},
      {"/PRINT SUMMARY(LAMBDA)\r\n\t/PLOT", "/ w:PRINT w:SUMMARY ( w:LAMBDA ) / w:PLOT"},
      {"PREDPROB(prob:3)", "w:PREDPROB ( w:prob : n:3 )"},
      {"'it''s' \"a \"\"b\"\"\"", "s:it's q:a \"b\""},
      {"BY !f WITH !c.", "w:BY m:f w:WITH m:c"},
      {"education-num 2nd_floor 1e5x x.y µ_über",
       "w:education-num w:2nd_floor w:1e5x w:x.y w:µ_über"},
      {"70 -1 +.5 5. 1e-3 0x10 nan inf 1e", "n:70 n:-1 n:+.5 n:5. n:1e-3 w:0x10 w:nan w:inf w:1e"},
      {"a,b", "w:a o:, w:b"},
      {"SIZE=5.", "w:SIZE = n:5"},
      {"'open\nnext", "s:open! w:next"},
      {"\"", "q:!"},
      {"1e999 -1e999 1e-999", "n:1e999! n:-1e999! n:1e-999!"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Shown(c.fText), c.fTokens) << c.fText;
}

TEST(Tokenizer, ReadsNumbersExactly) {
  const auto numberOf = [](const char* text) { return Tokenize(text, 1, 1).front().fNumber; };
  EXPECT_EQ(numberOf("0.001"), 0.001);
  EXPECT_EQ(numberOf("+1.7976931348623157e308"), std::numeric_limits<double>::max());
  EXPECT_EQ(numberOf("4.9e-324"), std::numeric_limits<double>::denorm_min());
  EXPECT_TRUE(std::signbit(numberOf("-0")));
}

TEST(Tokenizer, CountsColumnsInCharactersFromThePlaceOfTheCommand) {
  const auto tokens = Tokenize("über y\n  'ä' z \n\n", 7, 3);
  ASSERT_EQ(tokens.size(), 5u);
  const int expected[][2] = {{7, 3}, {7, 8}, {8, 3}, {8, 7}, {8, 8}};
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    EXPECT_EQ(tokens[i].fLine, expected[i][0]) << i;
    EXPECT_EQ(tokens[i].fColumn, expected[i][1]) << i;
  }
  EXPECT_EQ(tokens[1].fOffset, 6u);  // bytes
  EXPECT_EQ(Tokenize("y  \n .\n", 1, 1).back().fLine, 2);
}

TEST(Tokenizer, ReadsBackEveryNameAsItIsQuoted) {
  for (const char* text : {"age", "body mass", "to", "ALL", "2007", "1e5", "a/b", "a=b", "!f", "a.",
                           "a.b", "it's", "say \"hi\"", "capital-gain", "größe", "*", "a:b", "-"}) {
    const auto tokens = Tokenize("x " + KovaVarName(text).Quoted() + ".", 1, 1);
    ASSERT_EQ(tokens.size(), 3u) << text;
    EXPECT_EQ(tokens[1].fText, text);
    EXPECT_TRUE(tokens[1].IsName()) << text;
    EXPECT_FALSE(tokens[1].fType == TokenInfoObj::kWord && KovaVarName::IsReserved(text)) << text;
  }
}

TEST(KovaVarName, AcceptsNewNamesThatCanBeWrittenAndShown) {
  for (const char* good : {"pred", "my pred", "größe", "x"}) {
    EXPECT_TRUE(KovaVarName(good).IsValid()) << good;
  }
  for (const char* bad : {"", " a", "a ", "With", "tab\there", "\xC3", "\xFF\xFE"}) {
    EXPECT_FALSE(KovaVarName(bad).IsValid()) << bad;
  }
  EXPECT_TRUE(KovaVarName(std::string(64, 'x')).IsValid());
  EXPECT_FALSE(KovaVarName(std::string(65, 'x')).IsValid());
}

TEST(CommandSplitter, EndsCommandsAtPeriodsThatEndLines) {
  const struct {
    const char* fText;
    std::vector<std::string> fCommands;
  } cases[] = {
      {"A x.\nB y.", {"A x.", "B y."}},
      {"A x. B y.", {"A x. B y."}},
      {"A v=0.5\n  /C 1.5.  \r\n\r\nB", {"A v=0.5\n  /C 1.5.", "B"}},
      {"* don't read this\n or this.\nA x", {"A x"}},
      {"*.\n.\n  .\nA", {"A"}},
      {"A 'open.\nB", {"A 'open.", "B"}},
      {"\xEF\xBB\xBF* note.\nA.", {"A."}},
      {" \n\t", {}},
      {"* only a comment", {}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> found;
    for (const auto& command : SplitCommands(c.fText)) found.push_back(command.fText);
    EXPECT_EQ(found, c.fCommands) << c.fText;
  }
}

TEST(CommandSplitter, EndsCommandsBeforeTheWordOfAnother) {
  const struct {
    const char* fText;
    std::vector<std::string> fCommands;
  } cases[] = {
      {"RANK x. MODEL y.", {"RANK x.", "MODEL y."}},
      {"RANK x.\t mod y. rank z", {"RANK x.", "mod y.", "rank z"}},
      {"RANK a.b /C 1. SIZE=2.", {"RANK a.b /C 1. SIZE=2."}},
      {"RANK x.MODEL y.", {"RANK x.MODEL y."}},
      {"RANK x. MODELS y.", {"RANK x. MODELS y."}},
      {"RANK 'x. MODEL' \"it''s. RANK\".", {"RANK 'x. MODEL' \"it''s. RANK\"."}},
      {"* see x. RANK y.\nRANK x.", {"RANK x."}},
      {"RANK x.  * MODEL y.", {"RANK x.  * MODEL y."}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> found;
    for (const auto& command : SplitCommands(c.fText, {"RANK", "MODEL"})) {
      found.push_back(command.fText);
    }
    EXPECT_EQ(found, c.fCommands) << c.fText;
  }
}

TEST(CommandSplitter, SaysWhereEachCommandStarts) {
  const auto commands = SplitCommands("* note.\n\n  A x\n y.\n B.\n");
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_THAT((std::vector<int>{commands[0].fLine, commands[0].fColumn}), ElementsAre(3, 3));
  EXPECT_THAT((std::vector<int>{commands[1].fLine, commands[1].fColumn}), ElementsAre(5, 2));
}

}  // namespace
