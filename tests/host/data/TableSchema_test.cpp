#include "host/data/TableSchema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

#include "host/arrow/DataFile.h"
#include "host/data/MeasurementLevels.h"
#include "host/data/MemoryTable.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr double kHighest = std::numeric_limits<double>::max();

MemoryTable People() {
  MemoryTable table;
  table.AddNumbers("age", {30, 40.5});
  table.AddStrings("sex", {"f", std::nullopt});
  return table;
}

std::string ErrorOf(const std::string& document) {
  try {
    MemoryTable table = People();
    TableSchema::Parse(document, "s.json").Apply(table);
  } catch (const HostIOError& error) {
    return error.what();
  }
  return "no error";
}

TEST(TableSchema, PutsLabelsLevelsAndMissingValuesIntoTheDictionary) {
  MemoryTable table = People();
  const TableSchema schema = TableSchema::Parse(R"({"fields": [
    {"name": "age", "title": "Age in years", "type": "number", "format": "default",
     "missingValues": [-9, "-8", {"value": "-7", "label": "refused"}, "90..", "", "NA"],
     "categories": [{"value": 30, "label": "thirty"}, {"value": "40.5", "label": "more"}, 1],
     "categoriesOrdered": true},
    {"name": "sex", "type": "string", "missingValues": ["x", {"value": "y", "label": "why"}],
     "categories": ["f", {"value": "m", "label": "male"}]}]})",
                                                "s.json");
  schema.Apply(table);
  const KOVA_Variable& age = table.GetVariable(0);
  EXPECT_EQ(age.GetLabel(), "Age in years");
  EXPECT_EQ(age.GetMeasurementLevel(), KOVA_Variable::kOrdinal);
  EXPECT_THAT(age.GetMissingValues().GetNumbers(), testing::ElementsAre(-9, -8, -7));
  EXPECT_EQ(age.GetMissingValues().GetLow(), 90);
  EXPECT_EQ(age.GetMissingValues().GetHigh(), kHighest);
  EXPECT_EQ(*age.GetValueLabels().FindLabel(30.0), "thirty");
  EXPECT_EQ(*age.GetValueLabels().FindLabel(40.5), "more");
  EXPECT_EQ(*age.GetValueLabels().FindLabel(-7.0), "refused");
  EXPECT_EQ(age.GetValueLabels().FindLabel(1.0), nullptr);
  const KOVA_Variable& sex = table.GetVariable(1);
  EXPECT_EQ(sex.GetMeasurementLevel(), KOVA_Variable::kNominal);
  EXPECT_THAT(sex.GetMissingValues().GetStrings(), testing::ElementsAre("x", "y"));
  EXPECT_EQ(*sex.GetValueLabels().FindLabel(std::string("m")), "male");
  EXPECT_EQ(schema.Types().at("age"), FieldType::kNumber);
}

TEST(TableSchema, OpenRangesReachTheEndsAndNeverCoverSystemMissing) {
  for (const auto& [text, low, high] :
       {std::tuple{"..-1", kLowest, -1.0}, {"90..99.5", 90.0, 99.5}, {"-1e3..", -1e3, kHighest}}) {
    MemoryTable table = People();
    TableSchema::Parse(
        R"({"fields":[{"name":"age","missingValues":[")" + std::string(text) + "\"]}]}", "s.json")
        .Apply(table);
    const KOVA_MissingValues& missing = table.GetVariable(0).GetMissingValues();
    EXPECT_EQ(missing.GetLow(), low) << text;
    EXPECT_EQ(missing.GetHigh(), high) << text;
    EXPECT_TRUE(missing.Contains(low == kLowest ? -5.0 : low));
    EXPECT_FALSE(missing.Contains(KOVA_SystemMissing));
  }
}

TEST(TableSchema, TheDocumentsMissingValuesHoldWhereAFieldHasNoneOfItsOwn) {
  MemoryTable table = People();
  table.AddNumbers("size", {1, -99});
  const TableSchema schema = TableSchema::Parse(
      R"({"missingValues": ["", "-99", "none"], "fields": [{"name": "age", "missingValues": [0]}]})",
      "s.json");
  schema.Apply(table);
  EXPECT_THAT(table.GetVariable(0).GetMissingValues().GetNumbers(), testing::ElementsAre(0));
  EXPECT_TRUE(table.GetVariable(1).GetMissingValues().Contains(std::string("none")));
  EXPECT_TRUE(table.GetVariable(1).GetMissingValues().Contains(std::string("-99")));
  EXPECT_THAT(table.GetVariable(2).GetMissingValues().GetNumbers(), testing::ElementsAre(-99));
  EXPECT_THAT(schema.NullTokens(), testing::ElementsAre("", "none"));
}

struct BadDocument {
  const char* fText;
  const char* fError;
};

const BadDocument kBadDocuments[] = {
    {"{\n  \"fields\": [}", "s.json, line 2, column 14: the text is not valid JSON here"},
    {"{\"fields\": [],\n  \"x\": [1, -1e999]}",
     "s.json, line 2, column 12: the number -1e999 is too large"},
    {"[]", "s.json: the document must be an object with a list \"fields\""},
    {"{}", "s.json, fields: a list of fields is needed"},
    {R"({"fields":[1]})", "s.json, fields[0]: a field must be an object with a \"name\""},
    {R"({"fields":[{"title":"x"}]})", "s.json, fields[0].name: a field needs a name"},
    {R"({"fields":[{"name":3}]})", "s.json, fields[0].name: a string is needed"},
    {R"({"fields":[{"name":"age"},{"name":"age"}]})",
     "s.json, fields[1].name: a field named \"age\" is there already"},
    {R"({"fields":[{"name":"agee"}]})",
     "s.json, fields[0].name: the data have no column \"agee\"; did you mean \"age\"?"},
    {R"({"fields":[{"name":"age","type":"geo"}]})",
     "s.json, fields[0].type: \"geo\" is not a type that can be used; it must be any, string, "
     "number, integer, boolean, date, datetime or time"},
    {R"({"fields":[{"name":"sex","type":"number"}]})",
     "s.json, fields[0].type: column \"sex\" holds text, not what the type says"},
    {R"({"fields":[{"name":"age","missingValues":"x"}]})",
     "s.json, fields[0].missingValues: a list of values is needed"},
    {R"({"fields":[{"name":"age","missingValues":["x"]}]})",
     "s.json, fields[0].missingValues[0]: \"x\" is neither a number nor a range \"low..high\", as "
     "a numeric column needs it"},
    {R"({"fields":[{"name":"age","missingValues":["9..1"]}]})",
     "s.json, fields[0].missingValues[0]: \"9..1\" is neither a number nor a range \"low..high\", "
     "as a numeric column needs it"},
    {R"({"fields":[{"name":"age","missingValues":["1..2","3..4"]}]})",
     "s.json, fields[0].missingValues[1]: a column can have one range of missing values only"},
    {R"({"fields":[{"name":"age","categories":[{"label":"x"}]}]})",
     "s.json, fields[0].categories[0]: the object needs a \"value\""},
    {R"({"fields":[{"name":"age","categories":["old"]}]})",
     "s.json, fields[0].categories[0]: \"old\" is not a number"},
    {R"({"fields":[{"name":"age","categoriesOrdered":true}]})",
     "s.json, fields[0].categoriesOrdered: there are no \"categories\""},
};

TEST(TableSchema, SaysWhatIsWrongWhereAndWhatIsAllowed) {
  for (const BadDocument& one : kBadDocuments) EXPECT_EQ(ErrorOf(one.fText), one.fError);
  EXPECT_THROW(TableSchema::Read("/nowhere/s.json"), HostIOError);
}

TEST(TableSchema, WordsOfATypedFieldStandForNothingWhereTextIsRead) {
  const TableSchema schema = TableSchema::Parse(
      R"({"fields": [{"name": "n", "type": "number", "missingValues": ["", "?", -9, "90..99"]},
                     {"name": "s", "type": "string", "missingValues": ["?"]},
                     {"name": "d", "type": "date", "missingValues": [{"value": "-", "label": "no"}]}]})",
      "s.json");
  DataFileOptions options{schema.NullTokens(), schema.Types()};
  options.fColumnNulls = schema.ColumnNulls();
  const ScratchFolder folder;
  const std::string path = folder.Write("t.csv", "n,s,d\n1,?,-\n?,a,1970-01-02\n-9,b,\n");
  const auto table = OpenDataFile(path, options, TableStorage::kMemory);
  schema.Apply(*table);
  EXPECT_THAT(Cells(*table, 0), testing::ElementsAre("1", ".", "-9"));
  EXPECT_THAT(Cells(*table, 1), testing::ElementsAre("0:?", "1:a", "2:b"));
  EXPECT_THAT(Cells(*table, 2), testing::ElementsAre(".", "1", "."));
  EXPECT_THAT(table->GetVariable(0).GetMissingValues().GetNumbers(), testing::ElementsAre(-9));
  EXPECT_TRUE(table->GetVariable(1).GetMissingValues().Contains(std::string("?")));
}

TEST(MeasurementLevels, FollowValidDistinctWholeValues) {
  const auto level = [](std::vector<double> values, double userMissing = -1e9) {
    MemoryTable table;
    table.AddNumbers("x", values);
    table.GetVariable(0).GetMissingValues().AddNumber(userMissing);
    SettleMeasurementLevels(table);
    return table.GetVariable(0).GetMeasurementLevel();
  };
  std::vector<double> whole;
  for (int i = 0; i < 23; ++i) whole.insert(whole.end(), 500, i);
  EXPECT_EQ(level(whole), KOVA_Variable::kNominal);
  whole.push_back(99);
  EXPECT_EQ(level(whole), KOVA_Variable::kScale);
  EXPECT_EQ(level(whole, 99), KOVA_Variable::kNominal);
  EXPECT_EQ(level({1, 2.5}), KOVA_Variable::kScale);
  EXPECT_EQ(level({1, 2.5}, 2.5), KOVA_Variable::kNominal);
  EXPECT_EQ(level({KOVA_SystemMissing, KOVA_SystemMissing}), KOVA_Variable::kNominal);
  EXPECT_EQ(level({}), KOVA_Variable::kNominal);
  MemoryTable table = People();
  table.GetVariable(0).SetMeasurementLevel(KOVA_Variable::kOrdinal);
  SettleMeasurementLevels(table);
  EXPECT_EQ(table.GetVariable(0).GetMeasurementLevel(), KOVA_Variable::kOrdinal);
  EXPECT_EQ(table.GetVariable(1).GetMeasurementLevel(), KOVA_Variable::kNominal);
}

}  // namespace
}  // namespace MCHost
