#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <sstream>

#include "common/MissingValue.h"
#include "naivebayes/encoders/NBBinningEncoder.h"
#include "naivebayes/encoders/NBCatNumEncoder.h"
#include "naivebayes/encoders/NBNumericUserMissing.h"
#include "naivebayes/encoders/NBRoundEncoder.h"
#include "naivebayes/encoders/NBStringEncoder.h"
#include "naivebayes/encoders/NBStringUserMissing.h"
#include "naivebayes/model/NBayesInputBase.h"
#include "naivebayes/variables/NBVarList.h"

namespace {

constexpr double kMissing = MCMV::gMissingValue;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(NBBinningEncoder, AValueOnACutpointGoesToTheLowerBin) {
  const NBBinningEncoder encoder(0, 8, 4);  // cut at 2, 4, 6
  const double values[] = {-5, 0, 2, 2.0000001, 4, 5, 6, 6.1, 100, kMissing, kNaN};
  const double expected[] = {0, 0, 0, 1, 1, 2, 2, 3, 3, -1, -1};
  std::vector<std::int32_t> codes(std::size(values));
  encoder.EncodeColumn(values, std::size(values), codes.data());
  for (std::size_t i = 0; i < std::size(values); ++i) {
    EXPECT_EQ(encoder.Encode(values[i]), expected[i]) << values[i];
    EXPECT_EQ(codes[i], expected[i]) << values[i];
  }
}

TEST(NBBinningEncoder, WithOneBinAnswersBySign) {
  const NBBinningEncoder encoder(0, 1, 1);
  EXPECT_EQ(encoder.Encode(0.0), 1);
  EXPECT_EQ(encoder.Encode(-0.5), 0);
}

// Every cutpoint, its neighbours to a few doubles, what lies between, and the ends of the doubles.
std::vector<double> ValuesAround(const std::vector<double>& cutpoints) {
  constexpr double kHigh = std::numeric_limits<double>::max();
  std::vector<double> values = {-kHigh, kHigh, kMissing, kNaN, 0.0, -0.0, 5e-324, -5e-324, 1, -1};
  for (std::size_t c = 0; c < cutpoints.size(); ++c) {
    double below = cutpoints[c], above = cutpoints[c];
    for (int step = 0; step < 4; ++step) {
      values.push_back(below);
      values.push_back(above);
      below = std::nextafter(below, -kHigh);
      above = std::nextafter(above, kHigh);
    }
    for (int part = 1; c > 0 && part < 8; ++part) {
      values.push_back(std::lerp(cutpoints[c - 1], cutpoints[c], part / 8.0));
    }
  }
  return values;
}

TEST(NBBinGrid, GivesTheBinOfCountingCutpointsForEveryValue) {
  constexpr double kHigh = std::numeric_limits<double>::max();
  struct {
    std::vector<double> cutpoints;
    bool usable;
  } cases[] = {
      {{}, false},                                    // answers by sign
      {{3}, true},                                    // two bins
      {{2, 2, 2}, true},                              // a gap of empty bins between two
      {{-kHigh, -kHigh, 2, 3.5, 5, kHigh}, true},     // empty ends
      {{-kHigh, kHigh}, true},                        // one bin in reach
      {{1, 1.5, 1.5, 3, 4, 4.5, 4.5, 4.5, 9}, true},  // gaps of every length
      {{0, 1e-9, 1, 2}, false},                       // too close together for cells
      {{1, 1 + 1e-15, 1 + 2e-15, 1 + 3e-15}, true},   // a few doubles apart
      {{5e-324, 1e-323, 1.5e-323}, false},            // no scale holds the cells
      {{1e-310, 2e-310, 3e-310}, false},
      {{-kHigh / 4, 0, kHigh / 4}, true},       // the range is a double
      {{-kHigh / 1.5, 0, kHigh / 1.5}, false},  // it is not
      {{3, 1, 2}, false},                       // out of order
      {{1, 2, HUGE_VAL}, false},                // no number
  };
  for (const auto& c : cases) {
    const NBBinningEncoder search(c.cutpoints);
    const NBBinGrid grid(c.cutpoints);
    ASSERT_EQ(grid.IsUsable(), c.usable) << testing::PrintToString(c.cutpoints);
    if (!c.usable) continue;
    const std::vector<double> values = ValuesAround(c.cutpoints);
    std::vector<std::int32_t> bins(values.size());
    grid.Encode(values.data(), values.size(), bins.data());
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_EQ(bins[i], search.Encode(values[i])) << values[i];
    }
  }
}

TEST(NBBinGrid, IsThereForEqualWidthsOfAnyRange) {
  const double ranges[][2] = {{0, 1},          {-1, 1},    {1e15, 1e15 + 64}, {-1e-300, 3e-300},
                              {-8e307, 8e307}, {0.1, 0.7}, {1e300, 1.1e300},  {-7, 1e9}};
  for (const auto& [low, high] : ranges) {
    for (const int bins : {2, 3, 7, 10, 64, 999}) {
      const NBBinningEncoder encoder(low, high, bins);
      const std::vector<double>& cutpoints = encoder.GetBinningCutpoints();
      EXPECT_TRUE(NBBinGrid(cutpoints).IsUsable()) << low << ' ' << bins;
      const std::vector<double> values = ValuesAround(cutpoints);
      std::vector<std::int32_t> codes(values.size());
      encoder.EncodeColumn(values.data(), values.size(), codes.data());
      for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(codes[i], encoder.Encode(values[i])) << values[i] << ", " << bins << " bins";
      }
    }
  }
}

NBayesInputBase CountsOf(const std::vector<double>& rows) {
  NBayesInputBase counts;
  std::vector<std::vector<double>> table;
  for (double row : rows) table.push_back({row});
  counts.Setup(1.0, table);
  return counts;
}

TEST(NBBinningEncoder, RebinningMakesEmptyBinsUnreachable) {
  constexpr double kLow = std::numeric_limits<double>::lowest();
  constexpr double kHigh = std::numeric_limits<double>::max();
  const struct {
    std::vector<double> counts, cutpoints;
  } cases[] = {
      {{0, 1, 1, 0}, {kLow, 2, kHigh}},  // empty ends
      {{1, 0, 0, 1}, {2, 2, 2}},         // a gap: the middle of 1 and 3
      {{1, 0, 1, 1}, {1.5, 1.5, 3}},     // a gap of one
      {{1, 1, 1, 1}, {1, 2, 3}},         // nothing empty
      {{0, 0, 1, 0}, {1, 2, 3}},         // too little left
  };
  const NBBinningEncoder encoder(0, 4, 4);
  for (const auto& c : cases) {
    const NBayesInputBase counts = CountsOf(c.counts);
    const auto rebinned = encoder.CreateRebinned(&counts);
    EXPECT_EQ(rebinned->GetBinningCutpoints(), c.cutpoints);
    EXPECT_EQ(rebinned->GetNumberOfCategories(), 4);
  }
  const NBayesInputBase counts = CountsOf({0, 1, 1, 0});
  const auto rebinned = encoder.CreateRebinned(&counts);
  for (double value : {-1e300, 0.5, 1.5}) EXPECT_EQ(rebinned->Encode(value), 1);
  for (double value : {2.5, 3.5, 1e300}) EXPECT_EQ(rebinned->Encode(value), 2);
}

TEST(CategoryEncoders, GiveCodesInOrderOfFirstAppearance) {
  NBCatNumEncoder numbers(4);
  const double values[] = {5, 3, 5, 9, kMissing, 3};
  std::vector<double> codes;
  for (double value : values) codes.push_back(numbers.Encode(value));
  EXPECT_THAT(codes, testing::ElementsAre(0, 1, 0, 2, -1, 1));
  EXPECT_EQ(numbers.Decode(2), 9);
  EXPECT_EQ(numbers.Decode(3), kMissing);

  NBStringEncoder strings(0);
  EXPECT_EQ(strings.Encode("b"), 0);
  EXPECT_EQ(strings.Encode("a"), 1);
  EXPECT_EQ(strings.EncodeConst("c"), -1);
  const NBStringEncoder copy(strings);
  EXPECT_EQ(*copy.Decode(1), "a");
  EXPECT_EQ(copy.GetNumberOfCategories(), 2);
}

TEST(NBRoundEncoder, WeightsNotAboveZeroAreMissing) {
  const struct {
    INBVariable::NBWRoundingOption option;
    double value, expected;
  } cases[] = {{INBVariable::kTruncate, 2.9, 2},        {INBVariable::kRound, 2.5, 3},
               {INBVariable::kRound, 0.4, kMissing},    {INBVariable::kAsIs, 0.4, 0.4},
               {INBVariable::kAsIs, 0, kMissing},       {INBVariable::kAsIs, -1, kMissing},
               {INBVariable::kTruncate, kNaN, kMissing}};
  for (const auto& c : cases) {
    EXPECT_EQ(NBRoundEncoder(c.option).Encode(c.value).first, c.expected) << c.value;
  }
}

TEST(UserMissing, DeclaredValuesAndIntervalsEncodeToMissing) {
  NBVarList list;
  const int c = list.AddContVar("c", "", 0, 10, 5, INBVariable::kInput);
  const int s = list.AddCatVar("s", "", std::vector<std::string>{"a", "b"}, INBVariable::kInput);
  list.AddDiscreteUserMissing(c, 3.0, "refused");
  list.SetMissingInterval(c, 8, 9);
  list.AddDiscreteUserMissing(s, std::string("b"), "");
  const NBVarList copy(list);
  const auto& binning = static_cast<const NBBinningEncoder&>(*copy.GetEncoderAt(c));
  for (double value : {3.0, 8.0, 8.5, 9.0}) EXPECT_EQ(binning.Encode(value), -1) << value;
  for (double value : {2.9, 7.9, 9.1}) EXPECT_NE(binning.Encode(value), -1) << value;
  EXPECT_EQ(static_cast<const NBStringEncoder&>(*copy.GetEncoderAt(s)).EncodeConst("b"), -1);
  EXPECT_TRUE(
      copy.GetVarAt(c)->GetUserMissingInfo()->IsEqualTo(list.GetVarAt(c)->GetUserMissingInfo()));
  EXPECT_FALSE(
      copy.GetVarAt(c)->GetUserMissingInfo()->IsEqualTo(list.GetVarAt(s)->GetUserMissingInfo()));
  EXPECT_FALSE(NBNumericInterval(1.0, 2.0).Contains(kNaN));
  NBNumericInterval interval(5.0, true);
  EXPECT_TRUE(interval.Contains(-1e308));
  EXPECT_FALSE(interval.SetLeftEnd(6));
}

TEST(NBVarList, RefusesEmptyAndTakenNamesAndContinuousTargets) {
  NBVarList list;
  EXPECT_EQ(list.AddContVar("a", "", 0, 1, 5, INBVariable::kInput), 0);
  EXPECT_EQ(list.AddWeightVar("a", "", INBVariable::kRound), -1);
  EXPECT_EQ(list.AddContVar("", "", 0, 1, 5, INBVariable::kInput), -1);
  EXPECT_EQ(list.AddContVar("y", "", 0, 1, 5, INBVariable::kOutput), -1);
  EXPECT_EQ(list.Size(), 1);
  EXPECT_EQ(list.GetWeightIndex(), -1);
  EXPECT_EQ(list.GetNumContVar(), 1);
}

TEST(NBVarList, RefusesCategoriesThatAreNoneOrGivenTwice) {
  NBVarList list;
  const std::vector<std::string> labels = {"a", "b", "c"};
  for (const double bad : {2.0, std::nan(""), MCMV::gMissingValue}) {
    const std::vector<double> values = {1, 2, bad};
    EXPECT_EQ(list.AddCatVar("x", "", values, INBVariable::kInput), -1) << bad;
    EXPECT_EQ(list.AddCatVar("x", "", values, labels, INBVariable::kInput), -1) << bad;
  }
  EXPECT_EQ(list.AddCatVar("x", "", std::vector<double>{0.0, -0.0}, INBVariable::kInput), -1);
  EXPECT_EQ(list.AddCatVar("x", "", {"p", "q", "p"}, labels, INBVariable::kInput), -1);
  EXPECT_EQ(list.Size(), 0);
  EXPECT_EQ(list.AddCatVar("x", "", {"p", "q", ""}, labels, INBVariable::kInput), 0);
}

TEST(NBVarList, RemovingAVariableKeepsNamesTargetAndWeightInStep) {
  NBVarList list;
  list.AddContVar("a", "", 0, 1, 5, INBVariable::kInput);
  list.AddWeightVar("w", "", INBVariable::kRound);
  list.AddCatVar("y", "", 3, INBVariable::kStringCategorical, INBVariable::kOutput);
  list.AddCatVar("b", "", 2, INBVariable::kNumericCategorical, INBVariable::kPossibleInput);
  list.RemoveVar("a");
  EXPECT_EQ(list.GetTargetIndex(), 1);
  EXPECT_EQ(list.GetWeightIndex(), 0);
  EXPECT_EQ(list.FindVariable("b"), 2);
  EXPECT_EQ(list.FindVariable("a"), -1);
  EXPECT_EQ(list.GetNOutputCats(), 3);
  EXPECT_EQ(list.GetNumPossibleInputVars(), 1);
  EXPECT_EQ(static_cast<const NBCatNumEncoder&>(*list.GetEncoderAt(2)).Decode(1), 1);
}

TEST(NBVarList, NamesConstantAndEmptyVariablesInUse) {
  NBVarList list;
  list.AddCatVar("y", "", 2, INBVariable::kNumericCategorical, INBVariable::kOutput);
  list.AddCatVar("one", "", 1, INBVariable::kNumericCategorical, INBVariable::kInput);
  list.AddContVar("flat", "", 3, 3, 5, INBVariable::kPossibleInput);
  list.AddContVar("none", "", 1, 0, 5, INBVariable::kInput);
  list.AddCatVar("gone", "", 0, INBVariable::kStringCategorical, INBVariable::kUnused);
  std::vector<int> constant, empty;
  EXPECT_FALSE(list.IsValidList(constant, empty, true));
  EXPECT_THAT(constant, testing::ElementsAre(1, 2));
  EXPECT_THAT(empty, testing::ElementsAre(3));
  EXPECT_FALSE(list.IsValidList(constant, empty, false));
  EXPECT_THAT(constant, testing::ElementsAre(1));
  list.SetVariableRole(1, INBVariable::kUnused);
  list.SetVariableRole(3, INBVariable::kUnused);
  list.AddContVar("cut", "", {2.5}, INBVariable::kInput);
  EXPECT_TRUE(list.IsValidList(constant, empty, false)) << "one cutpoint makes two bins";
}

TEST(Encoders, KnowTheirValuesAndNoOthers) {
  NBStringEncoder texts({"a", "b"});
  auto missing = std::make_unique<NBStringUserMissing>();
  missing->AddDiscreteValue("b", "");
  texts.SetUserMissingInfo(std::move(missing));
  EXPECT_EQ(texts.Encode("b"), -1) << "declared missing";
  EXPECT_EQ(texts.EncodeConst("a"), 0);
  EXPECT_EQ(texts.EncodeConst("b"), -1);
  EXPECT_EQ(texts.EncodeConst("c"), -1);
  EXPECT_EQ(texts.Encode("c"), 2);
  NBCatNumEncoder numbers(std::vector<double>{5.0});
  auto range = std::make_unique<NBNumericUserMissing>();
  range->SetInterval(NBNumericInterval(7.0, 9.0));
  numbers.SetUserMissingInfo(std::move(range));
  EXPECT_EQ(numbers.Encode(8.0), -1);
  EXPECT_EQ(numbers.Encode(9.5), 1);
  for (const long none : {-1L, 9L}) {
    EXPECT_EQ(texts.Decode(none), nullptr);
    EXPECT_EQ(numbers.Decode(none), kMissing);
  }
}

TEST(UserMissing, IsEqualWhereItsValuesAre) {
  const auto numeric = [](std::vector<double> values, double low, double high) {
    auto missing = std::make_unique<NBNumericUserMissing>();
    for (const double value : values) missing->AddDiscreteValue(value, "");
    if (low <= high) missing->SetInterval(NBNumericInterval(low, high));
    return missing;
  };
  const auto text = [](const char* value) {
    auto missing = std::make_unique<NBStringUserMissing>();
    missing->AddDiscreteValue(value, "");
    return missing;
  };
  const auto make = [&] {
    std::vector<std::unique_ptr<INBUserMissing>> all;
    all.push_back(numeric({1, 2}, 1, 0));
    all.push_back(numeric({1}, 1, 0));
    all.push_back(numeric({1}, 7, 9));
    all.push_back(numeric({1}, 7, 8));
    all.push_back(text("1"));
    all.push_back(text("2"));
    return all;
  };
  const auto all = make(), again = make();
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t j = 0; j < all.size(); ++j) {
      EXPECT_EQ(all[i]->IsEqualTo(again[j].get()), i == j) << i << j;
    }
  }
}

}  // namespace
