// What the classification table says beside its overall percent.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/backend/CommandTest.h"

namespace {

using MCTest::json;
using MCTest::Strings;
using testing::ElementsAre;
using testing::HasSubstr;

// The footnotes of the cell that holds the overall percent of a sample.
std::vector<std::string> NotesOf(const json& run, const char* sample) {
  std::vector<std::string> notes;
  for (const json& table : run["tables"]) {
    for (const json& cell : table["cells"]) {
      if (cell["layer"] != json{sample} || cell["column"] != json{"Percent Correct"}) continue;
      for (const json& note : cell["notes"]) notes.push_back(table["footnotes"][note.get<int>()]);
    }
  }
  return notes;
}

using ClassificationNotes = MCTest::CommandTest;

TEST_F(ClassificationNotes, ShowWhatGuessingTheMostFrequentCategoryWouldDo) {
  Strings y, x;
  std::vector<double> train, weight;
  // 30 a and 10 b to train, 5 a and 15 b to test; a b weighs as much as three a.
  for (int i = 0; i < 60; ++i) {
    const bool isA = i < 30 || (i >= 40 && i < 45);
    y.push_back(isA ? "a" : "b");
    x.push_back(isA == (i % 4 != 0) ? "u" : "v");
    train.push_back(i < 40 ? 1 : 0);
    weight.push_back(isA ? 1 : 3);
  }
  fTable.AddStrings("y", y);
  fTable.AddStrings("x", x);
  fTable.AddNumbers("train", train);
  const int weightVar = fTable.AddNumbers("w", weight);
  const std::string command = "NAIVEBAYES y BY x /PRINT CLASSIFICATION";
  const json all = Run(command + ".");
  EXPECT_THAT(NotesOf(all, "Training"),
              ElementsAre(HasSubstr(", a, would be right for 58.3%"), HasSubstr("flatters")));
  const json split = Run(command + " /TRAININGSAMPLE VARIABLE=train.");
  EXPECT_THAT(NotesOf(split, "Training"), ElementsAre(HasSubstr(", a, would be right for 75.0%")));
  EXPECT_THAT(NotesOf(split, "Test"), ElementsAre(HasSubstr(", b, would be right for 75.0%")));
  fTable.SetWeightVarIndex(weightVar);
  EXPECT_THAT(NotesOf(Run(command + "."), "Training")[0],
              HasSubstr(", b, would be right for 68.2%"));
}

}  // namespace
