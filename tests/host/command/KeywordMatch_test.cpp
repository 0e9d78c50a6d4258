#include "host/text/KeywordMatch.h"

#include <gtest/gtest.h>

namespace {

using MCHost::KeywordMatch;
using MCHost::MatchKeyword;
using MCHost::NearestWord;

TEST(KeywordMatch, TakesAbbreviationsOfThreeLettersThatLeaveNoDoubt) {
  const std::vector<std::string> keywords = {"PCTMISSING", "PCTEQUAL", "CV", "STDDEV", "STD"};
  const struct {
    const char* fWord;
    KeywordMatch::Result fResult;
    std::size_t fIndex;
  } cases[] = {
      {"pctmissing", KeywordMatch::kFound, 0}, {"PctM", KeywordMatch::kFound, 0},
      {"PCT", KeywordMatch::kAmbiguous, 1},    {"cv", KeywordMatch::kFound, 2},
      {"C", KeywordMatch::kUnknown, 0},        {"st", KeywordMatch::kUnknown, 0},
      {"STD", KeywordMatch::kFound, 4},        {"STDD", KeywordMatch::kFound, 3},
      {"STDDEVS", KeywordMatch::kUnknown, 0},  {"", KeywordMatch::kUnknown, 0},
  };
  for (const auto& c : cases) {
    const KeywordMatch match = MatchKeyword(c.fWord, keywords);
    EXPECT_EQ(match.fResult, c.fResult) << c.fWord;
    if (c.fResult == KeywordMatch::kFound) {
      EXPECT_EQ(match.fIndex, c.fIndex) << c.fWord;
    }
  }
}

TEST(KeywordMatch, SuggestsWhatWasMostLikelyMeant) {
  const std::vector<std::string> known = {"species",       "island", "bill_length_mm",
                                          "bill_depth_mm", "sex",    "x1"};
  const struct {
    const char* fWord;
    const char* fNearest;
  } cases[] = {
      {"spicies", "species"},
      {"ISLAND", "island"},
      {"bill_lenght_mm", "bill_length_mm"},
      {"sxe", "sex"},
      {"x2", "x1"},
      {"bill_depth", "bill_depth_mm"},
      {"weight", ""},
      {"", ""},
      {"q", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(NearestWord(c.fWord, known), c.fNearest) << c.fWord;
}

TEST(KeywordMatch, JoinsAlternativesAsTheyAreSpoken) {
  EXPECT_EQ(MCHost::JoinAlternatives({}), "");
  EXPECT_EQ(MCHost::JoinAlternatives({"A"}), "A");
  EXPECT_EQ(MCHost::JoinAlternatives({"A", "B"}), "A or B");
  EXPECT_EQ(MCHost::JoinAlternatives({"A", "B", "C"}), "A, B or C");
}

}  // namespace
