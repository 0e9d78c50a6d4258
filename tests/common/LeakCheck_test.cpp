// The rules about leaks, on counts made up to stand on either side of each threshold.
#include "common/LeakCheck.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using MCCommon::Leak;
using MCCommon::LeakTally;
using MCCommon::LeakTraits;

TEST(LeakCheck, SuspectsByTheFirstRuleAndOnlyWithEnoughCases) {
  const struct {
    const char* fWhat;
    LeakTraits fTraits;
    Leak fLeak;
  } cases[] = {
      {"a name a case", {30, 30}, Leak::kNamesCases},
      {"too few cases to say", {29, 29, true}, Leak::kNone},
      {"two cases a name", {100, 50}, Leak::kNone},
      {"names that determine are names", {100, 51, true}, Leak::kNamesCases},
      {"determined", {100, 2, true}, Leak::kDetermines},
      {"determined by a number", {100, 0, true}, Leak::kDetermines},
      {"many categories that help all the same", {100, 40, false, 0, 0.1}, Leak::kNone},
      {"many categories that mislead", {100, 40, false, 0, -0.1}, Leak::kManyCategories},
      {"few categories that mislead", {100, 5, false, 0, -0.1}, Leak::kNone},
      {"no case", {}, Leak::kNone},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MCCommon::LeakCheck::Find(c.fTraits), c.fLeak) << c.fWhat;
  }
}

TEST(LeakCheck, KnowsARunningNumberFromOtherWholeNumbers) {
  const double even = (344.0 * 344.0 - 1.0) / 12.0;
  const struct {
    const char* fWhat;
    LeakTraits fTraits;
    double fLow;
    double fHigh;
    bool fbNumbers;
  } cases[] = {
      {"1 to N", {344, 0, false, even}, 1, 344, true},
      {"from elsewhere, in most cases", {300, 0, false, 1.03 * even}, 1001, 1344, true},
      {"one more than there are cases", {344, 0, false, even}, 1, 345, false},
      {"the same range, in the middle", {344, 0, false, 0.5 * even}, 1, 344, false},
      {"no whole numbers", {344, 0, false, even}, 0.5, 343.5, false},
      {"missing", {0, 0, false, 0}, -1.7976931348623157e308, -1.7976931348623157e308, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(MCCommon::LeakCheck::NumbersCases(c.fTraits, c.fLow, c.fHigh, 344), c.fbNumbers)
        << c.fWhat;
  }
}

TEST(LeakTally, CallsATargetDeterminedOnlyWhereChanceDoesNotDoIt) {
  struct Category {
    double fWeight;
    bool fbPure;
  };
  const struct {
    const char* fWhat;
    std::vector<Category> fCategories;
    double fLargestShare;
    bool fbDetermines;
  } cases[] = {
      {"two halves of a hundred", {{50, true}, {50, true}}, 0.5, true},
      {"ten and ten may be luck", {{10, true}, {10, true}}, 0.5, false},
      {"one of them mixed", {{50, true}, {50, false}}, 0.5, false},
      {"a rare value of its own category", {{990, true}, {10, true}}, 0.99, true},
      {"so rare that it may be luck", {{998, true}, {2, true}}, 0.998, false},
      {"a rare value in one of many categories", std::vector<Category>(200, {5, true}), 0.99,
       false},
      {"a constant target", {{500, true}, {500, true}}, 1.0, false},
      {"single cases say nothing, and are few", {{60, true}, {1, true}, {1, true}}, 0.5, true},
      {"single cases are most",
       {{3, true}, {1, true}, {1, true}, {1, true}, {1, true}},
       0.0001,
       false},
  };
  for (const auto& c : cases) {
    for (const double unit : {1.0, 2.5}) {
      LeakTally tally(unit);
      for (const Category& category : c.fCategories) {
        tally.AddCategory(unit * category.fWeight, category.fbPure);
      }
      const LeakTraits traits = tally.Traits(c.fLargestShare);
      EXPECT_EQ(traits.fbDetermines, c.fbDetermines) << c.fWhat;
      EXPECT_EQ(traits.fCategories, static_cast<double>(c.fCategories.size())) << c.fWhat;
    }
  }
}

}  // namespace
