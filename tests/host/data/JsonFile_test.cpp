// JSON Lines and arrays of objects, through OpenDataFile.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string ErrorOf(const std::string& path, const DataFileOptions& options = {}) {
  try {
    OpenDataFile(path, options, TableStorage::kMemory);
  } catch (const HostIOError& error) {
    return error.Place() + ": " + error.Reason();
  }
  return "no error";
}

struct Column {
  std::string fCells;  // of "x", one JSON value a line; nothing for a record without it
  std::vector<std::string> fTable;
  std::string fNote;
};

// A file of records {"x": cell}.
std::string Lines(const std::string& cells) {
  std::string lines;
  std::size_t at = 0;
  while (at <= cells.size()) {
    const std::size_t end = std::min(cells.find('|', at), cells.size());
    const std::string cell = cells.substr(at, end - at);
    lines += cell.empty() ? "{}\n" : "{\"x\": " + cell + "}\n";
    at = end + 1;
  }
  return lines;
}

TEST(JsonFile, AColumnIsWhatAllItsValuesAre) {
  const Column columns[] = {
      {"1|2.5|-3e2|null|", {"1", "2.5", "-300", ".", "."}, ""},
      {"true|false|null", {"1", "0", "."}, ""},
      {R"("a"|"b"|"a"|null)", {"0:a", "1:b", "0:a", "."}, ""},
      {R"("2024-02-29"|"1970-01-02")", {"19782", "1"}, "dates"},
      {R"("1970-01-01T00:00:01Z"|"1970-01-02T00:00:00Z")", {"1", "86400"}, "dates with times"},
      {R"("12:30:00"|"00:00:01")", {"45000", "1"}, "times"},
      {R"("2024-02-29"|"soon")", {"0:2024-02-29", "1:soon"}, ""},
      // A text of digits is a text: a postal code keeps its zeros.
      {R"("00501"|"10001")", {"0:00501", "1:10001"}, ""},
      {R"(1|"n.a."|2.50)",
       {"0:1", "1:n.a.", "2:2.50"},
       "1 cell of 3 that is text (line 2: \"n.a.\")"},
      {R"("u"|7|"v")", {"0:u", "1:7", "2:v"}, "1 cell of 3 that is no text (line 2: \"7\")"},
      {R"(1|true)", {"0:1", "1:true"}, "both numbers and true or false"},
      {"9007199254740993|1", {"9007199254740992", "1"}, "beyond 2^53"},
      {"18446744073709551616|1", {"1.8446744073709552e+19", "1"}, "beyond 2^53"},
      {R"("\u00e9\n\"x\\\""|"")", {"0:é\n\"x\\\"", "."}, ""},
  };
  const ScratchFolder folder;
  for (const Column& column : columns) {
    SCOPED_TRACE(column.fCells);
    const std::string path = folder.Write("t.jsonl", Lines(column.fCells));
    for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
      const auto table = OpenDataFile(path, {}, storage);
      EXPECT_EQ(Cells(*table, 0), column.fTable);
      const auto notes = table->Notes();
      if (column.fNote.empty()) {
        EXPECT_THAT(notes, IsEmpty());
      } else {
        EXPECT_THAT(notes, ElementsAre(HasSubstr(column.fNote)));
      }
    }
  }
}

TEST(JsonFile, KeysMayComeLateInAnyOrderOrNotAtAll) {
  const ScratchFolder folder;
  const std::string records[] = {
      "\xEF\xBB\xBF\n{\"a\": 1, \"b\": \"x\"}\r\n\n  {\"b\": \"y\", \"c\": true, \"a\": "
      "2}\n{}\n{\"c\": false}",
      "\n [{\"a\": 1, \"b\": \"x\"},\n{\"b\": \"y\",\n \"c\": true, \"a\": 2} , "
      "{},\n{\"c\":false}\n]\n",
      "{\n  \"a\": 1,\n  \"b\": \"x\"\n}\n{ \"b\": \"y\",\n\"a\": 2, \"c\": true "
      "}{}\n{\"c\":false}"};
  for (const std::string& text : records) {
    const auto table = OpenDataFile(folder.Write("t.json", text), {}, TableStorage::kMemory);
    EXPECT_THAT(Dictionary(*table), ElementsAre("a:0", "b:1", "c:0"));
    EXPECT_THAT(Cells(*table, 0), ElementsAre("1", "2", ".", "."));
    EXPECT_THAT(Cells(*table, 1), ElementsAre("0:x", "1:y", ".", "."));
    EXPECT_THAT(Cells(*table, 2), ElementsAre(".", "1", ".", "0"));
  }
}

TEST(JsonFile, WhatIsWrongIsNamedWithItsLine) {
  struct Fault {
    std::string fText;
    std::string fMessage;
  };
  const Fault faults[] = {
      {"{\"a\": 1}\n{\"a\": {\"city\": 1}}\n", "line 2: \"a\" holds an object"},
      {"{\"a\": 1}\n\n{\"b\": [1]}\n", "line 3: \"b\" holds a list"},
      {"{\"a\": 1}\n[1]\n", "line 2: the record is a list, not an object"},
      {"{\"a\": 1}\n17\n", "line 2: the record is \"17\", not an object"},
      {"{\"a\": 1}\n{\"a\": 1, \"a\": 2}\n", "line 2: the record has the key \"a\" twice"},
      {"{\"a\": 1}\n{\"a\": }\n", "line 2, column 7: the text is not valid JSON here"},
      {"{\"a\": 1}\n{\"a\": 1\n}\n", "line 2, column 8: the text is not valid JSON here"},
      {"{\"a\": 1e999}\n", "line 1, column 7: the number 1e999 is too large"},
      {"{\"a\": \"\xff\"}\n", "line 1, column 8: the text is not valid JSON here"},
      {"[{\"a\": 1},\n{\"a\":\n tru}]", "line 3, column 5: the text is not valid JSON here"},
      {"[{\"a\":1},{\"a\":2},{\"a\":x}]", "line 1, column 23: the text is not valid JSON here"},
      {"{\n\"a\": 1\n}\n{\n \"a\": x}\n", "line 5, column 7: the text is not valid JSON here"},
      {"{\n\"a\": 1\n", "line 1: the record has no end"},
      {"[{\"a\": 1}\n{\"a\": 1}]", "line 2: the records of the array lack a comma"},
      {"[{\"a\": 1}] x", "line 1: there is more behind the end of the array"},
      {"[{\"a\": 1},\n{\"a\": \"]", "line 2: the array has no end"},
      {"[]", ": there are no columns in it"},
      {" \n", ": there are no columns in it"},
  };
  const ScratchFolder folder;
  for (const Fault& fault : faults) {
    EXPECT_THAT(ErrorOf(folder.Write("t.jsonl", fault.fText)), HasSubstr(fault.fMessage));
  }
}

TEST(JsonFile, ASchemaAndNullTextsSettleHowItIsRead) {
  const ScratchFolder folder;
  const std::string path = folder.Write(
      "t.jsonl", "{\"a\": \"1\", \"b\": 7, \"c\": 1}\n{\"a\": \"-\", \"b\": 8, \"c\": 0}\n");
  const DataFileOptions options{
      {"-"}, {{"a", FieldType::kNumber}, {"b", FieldType::kString}, {"c", FieldType::kBoolean}}};
  const auto table = OpenDataFile(path, options, TableStorage::kMemory);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("1", "."));
  EXPECT_THAT(Cells(*table, 1), ElementsAre("0:7", "1:8"));
  EXPECT_THAT(Cells(*table, 2), ElementsAre("1", "0"));
  EXPECT_THAT(ErrorOf(path, {{}, {{"a", FieldType::kNumber}}}),
              "line 2: \"-\" is not a number, as column \"a\" is declared");
}

// Records longer than what is read at a time, and many of them, cut anywhere.
TEST(JsonFile, PiecesOfTheFileDoNotShow) {
  const std::string text(300000, 'x');
  std::string lines, list = "[";
  std::vector<std::string> expected;
  for (int i = 0; i < 20; ++i) {
    const std::string record = "{\"n\": " + std::to_string(i) + ", \"t\": \"" + text + "\"}";
    lines += record + "\n";
    list += (i > 0 ? ",\n" : "") + record;
    expected.push_back(std::to_string(i));
  }
  const ScratchFolder folder;
  for (const std::string& whole : {lines, list + "]"}) {
    const auto table = OpenDataFile(folder.Write("t.json", whole), {}, TableStorage::kStreamed);
    EXPECT_EQ(Cells(*table, 0), expected);
    EXPECT_EQ(Cells(*table, 1).back(), "0:" + text);
  }
}

TEST(JsonFile, IsSavedByWhatItsColumnsHold) {
  const ScratchFolder folder;
  const std::string path = folder.Write("t.jsonl",
                                        "{\"n\": 9007199254740993, \"d\": \"2024-02-29\", \"f\": "
                                        "0.12345678901234567890, \"g\": 0.1}\n");
  const auto table = OpenDataFile(path, {}, TableStorage::kMemory);
  WriteDataFile(*table, folder.Path("u.csv"));
  EXPECT_EQ(ReadFile(folder.Path("u.csv")),
            "n,d,f,g\n9007199254740993,2024-02-29,0.12345678901234567890,0.1\n");
  EXPECT_THROW(CheckDataFile(folder.Path("u.json")), HostIOError);
  WriteDataFile(*table, folder.Path("u.jsonl"));
  EXPECT_EQ(
      ReadFile(folder.Path("u.jsonl")),
      "{\"n\":9007199254740993,\"d\":\"2024-02-29\",\"f\":\"0.12345678901234567890\",\"g\":0.1}\n");
}

}  // namespace
}  // namespace MCHost
