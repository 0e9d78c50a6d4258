#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <vector>

#include "naivebayes/NBFactory.h"
#include "naivebayes/StatusMessages.h"
#include "tests/naivebayes/TestRecords.h"

namespace {

using nbtest::RandomData;

TEST(NBFactory, RefusesListsThatCannotTrain) {
  NaiveBayesSettings settings;
  NBVarList list = RandomData::MakeList({0, 1, 2, 3, 4, 5});
  NBFactory factory;
  const auto algorithm = factory.CreateNBAlgorithm(settings, list);
  ASSERT_NE(algorithm, nullptr);
  EXPECT_THAT(algorithm->GetComponentVersion(),
              testing::StartsWith("Naive Bayes Component Ver. 1.0"));
  EXPECT_TRUE(algorithm->GetSettings() == settings);
  std::ostringstream os;
  algorithm->Display(os);
  EXPECT_THAT(os.str(), testing::HasSubstr("Seed for random number generator = 876543"));
  NBVarList binned = RandomData::MakeList({0, 1, 2, 3, 4, 5});
  binned.SetVariableRole(RandomData::kTarget, INBVariable::kInput);
  EXPECT_EQ(factory.CreateNBAlgorithm(settings, binned), nullptr) << "no target";
  binned.SetVariableRole(RandomData::kFirst + 5, INBVariable::kOutput);
  EXPECT_EQ(factory.CreateNBAlgorithm(settings, binned), nullptr) << "no categorical target";
  list.AddCatVar("one", "", 1, INBVariable::kNumericCategorical, INBVariable::kInput);
  EXPECT_EQ(factory.CreateNBAlgorithm(settings, list), nullptr);
  EXPECT_EQ(factory.GetStatus(), MCNaive::Error(MCNaive::kNotConstructed));
}

// What would be passed over silently has a status that names its variable.
TEST(NBFactory, NamesTheVariableThatItRefuses) {
  constexpr auto kNumber = INBVariable::kNumericCategorical;
  constexpr auto kString = INBVariable::kStringCategorical;
  constexpr auto kInput = INBVariable::kInput;
  const struct {
    std::function<void(NBVarList&)> fChange;  // of target 0, "counted" 1, "listed" 2, "scale" 3
    std::int64_t fCode;
    std::int64_t fVariable;
  } cases[] = {
      {[](auto&) {}, 0, 0},
      {[](auto& list) { list.AddDiscreteUserMissing(1, 9, ""); }, 70023, 1},
      {[](auto& list) { list.AddDiscreteUserMissing(0, 9, ""); }, 70023, 0},
      {[](auto& list) { list.SetMissingInterval(1, 8, 9); }, 70023, 1},
      {[](auto& list) { list.AddDiscreteUserMissing(2, 9, ""); }, 0, 0},
      {[](auto& list) { list.AddDiscreteUserMissing(2, "?", ""); }, 70023, 2},
      {[](auto& list) { list.AddDiscreteUserMissing(3, "?", ""); }, 70023, 3},
      {[](auto& list) {
         list.AddDiscreteUserMissing(1, 9, "");
         list.SetVariableRole(1, INBVariable::kUnused);
       },
       0, 0},
      {[](auto& list) {
         const int words = list.AddCatVar("words", "", 2, kString, kInput);
         list.AddDiscreteUserMissing(words, "?", "");
       },
       70023, 4},
      {[](auto& list) { list.SetVariableRole(2, INBVariable::kOutput); }, 70024, 2},
      {[](auto& list) {
         list.AddWeightVar("v", "", INBVariable::kAsIs);
         list.AddWeightVar("w", "", INBVariable::kAsIs);
       },
       70024, 5},
      {[](auto& list) { list.RemoveContEncoders(false); }, 70025, 3},
      {[](auto& list) {
         list.RemoveContEncoders(false);
         list.SetupContEncoders(3, false);
       },
       0, 0},
  };
  for (const auto& c : cases) {
    NBVarList list;
    list.AddCatVar("y", "", 2, kNumber, INBVariable::kOutput);
    list.AddCatVar("counted", "", 2, kNumber, kInput);
    list.AddCatVar("listed", "", std::vector<double>{1, 2}, kInput);
    list.AddContVar("scale", "", 0, 1, 4, kInput);
    c.fChange(list);
    NaiveBayesSettings settings;
    NBFactory factory;
    EXPECT_EQ(factory.CreateNBAlgorithm(settings, list) == nullptr, c.fCode != 0);
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), c.fCode);
    EXPECT_EQ(factory.GetStatus().GetDiscreteDatum(0), c.fVariable);
    EXPECT_TRUE(factory.GetStatus().IsOK() || MCNaive::MessageOf(factory.GetStatus()) != nullptr);
  }
}

}  // namespace
