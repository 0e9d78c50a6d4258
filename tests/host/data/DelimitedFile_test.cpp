#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/arrow/CsvInspector.h"
#include "host/arrow/DataFile.h"
#include "host/data/MeasurementLevels.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

struct GoodColumn {
  const char* fAbout;
  const char* fValues;  // one cell a line
  int fType;
  Texts fCells;
};

const GoodColumn kGoodColumns[] = {
    {"numbers of every spelling",
     "1\n-2.5\n1e5\n 7 \n.5\n007",
     0,
     {"1", "-2.5", "100000", "7", "0.5", "7"}},
    {"infinities and NaN are missing", "1\ninf\n-Infinity\nnan\nNaN", 0, {"1", ".", ".", ".", "."}},
    {"nulls, quoted or not", "1\nNA\nnull\n\"\"\n\"NA\"", 0, {"1", ".", ".", ".", "."}},
    {"nothing but nulls is numeric", "NA\nNA", 0, {".", "."}},
    {"true and false", "true\nFALSE\nNA", 0, {"1", "0", "."}},
    {"true among numbers is text", "1\ntrue", 4, {"0:1", "1:true"}},
    {"dates are days", "1970-01-02\n2000-02-29", 0, {"1", "11016"}},
    {"dates with times are seconds", "1970-01-02\n1970-01-01 00:00:01.5", 0, {"86400", "1.5"}},
    {"zones are honoured", "1970-01-01T02:00:00+02:00\n1970-01-01T00:00:00Z", 0, {"0", "0"}},
    {"zone and none do not mix",
     "1970-01-01T00:00:00Z\n1970-01-01",
     20,
     {"0:1970-01-01T00:00:00Z", "1:1970-01-01"}},
    {"times are seconds", "00:01\n00:00:00.25", 0, {"60", "0.25"}},
    {"an impossible date is text", "2001-02-29", 10, {"0:2001-02-29"}},
    {"text keeps blanks, quotes and lines",
     "\" a \"\"b\"\"\"\n\"x\r\ny\"\n\"x\r\ny\"",
     6,
     {"0: a \"b\"", "1:x\r\ny", "1:x\r\ny"}},
    {"a quote inside an unquoted field is a quote", "5\"\n6\"", 2, {"0:5\"", "1:6\""}},
    {"width counts bytes", "é\nа́я\n猫", 6, {"0:é", "1:а́я", "2:猫"}},
};

TEST(DelimitedFile, ReadsColumnsAsWhatAllTheirValuesAre) {
  const ScratchFolder folder;
  for (const GoodColumn& one : kGoodColumns) {
    SCOPED_TRACE(one.fAbout);
    std::string text = "id,v,w\n";
    std::string value;
    for (const char c : std::string(one.fValues) + "\n") {
      const bool inQuotes = std::count(value.begin(), value.end(), '"') % 2 == 1 && value[0] == '"';
      if (c != '\n' || inQuotes) {
        value += c;
        continue;
      }
      text += "1," + value + ",z\n";
      value.clear();
    }
    const std::string path = folder.Write("t.csv", text);
    for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
      const auto table = OpenDataFile(path, {}, storage);
      EXPECT_EQ(table->GetVariable(1).GetType(), one.fType);
      EXPECT_EQ(Cells(*table, 1), one.fCells);
      EXPECT_EQ(table->CaseCount(), static_cast<std::int64_t>(one.fCells.size()));
    }
  }
}

std::string ErrorOf(const std::string& path, const DataFileOptions& options = {}) {
  try {
    OpenDataFile(path, options, TableStorage::kMemory);
  } catch (const HostIOError& error) {
    EXPECT_EQ(error.File(), path);
    return (error.Place().empty() ? "" : error.Place() + ": ") + error.Reason();
  }
  return "no error";
}

struct BadFile {
  const char* fName;
  std::string fText;
  const char* fError;
};

const BadFile kBadFiles[] = {
    {"empty.csv", "", "the file is empty"},
    {"mark.csv", "\xEF\xBB\xBF", "there is no header row"},
    {"blank.csv", "\n\r\n", "there is no header row"},
    {"short.csv", "a,b\n1,2\n\n3\n",
     "line 4, column 2: the row ends after 1 field; the header has 2"},
    {"long.csv", "a,b\n1,2,3\n",
     "line 2, column 5: the row has more fields than the header, which has 2 fields"},
    {"end.csv", "a,b\r1,2\r3", "line 3, column 2: the row ends after 1 field; the header has 2"},
    {"quoted.csv", "a,b\n\"x\r\ny\",2\n3\n",
     "line 4, column 2: the row ends after 1 field; the header has 2"},
    {"open.csv", "a,b\n1,\"é\n2,3\n",
     "line 2, column 3: the quote that opens here is never closed"},
    {"after.csv", "a,b\n\"é\"x,3\n",
     "line 2, column 4: only a delimiter or the end of the line may follow a closing quote; "
     "--quote none takes quotes as letters"},
    {"byte.csv", "a,b\né,\xFF\n",
     "line 2, column 3: the text is not valid UTF-8; --encoding latin1 reads "
     "Latin-1 and Windows-1252"},
    {"half.csv", "a\n\xC3", "line 2, column 1: the text ends within a character"},
    {"cut.csv", "a,b\n\xE2\x82,1\n",
     "line 2, column 2: the text is not valid UTF-8; --encoding latin1 reads "
     "Latin-1 and Windows-1252"},
    {"surrogate.csv", "a\n\"\xED\xA0\x80\"\n",
     "line 2, column 3: the text is not valid UTF-8; --encoding latin1 reads "
     "Latin-1 and Windows-1252"},
    {"zero.csv", std::string("a\nx\0y\n", 6),
     "line 2, column 2: a zero byte is not text; --encoding utf-16le or "
     "utf-16be reads UTF-16 without a mark"},
    {"twice.csv", "a,b,a\n1,2,3\n", "line 1, column 5: a column named \"a\" is there already"},
    {"name.csv", "a,,column2\n1,2,3\n",
     "line 1, column 4: a column named \"column2\" is there already"},
    {"table.xls", "a\n1\n",
     "the extension does not tell a data format; known are .csv, .tsv, .parquet, .arrow, .feather, "
     ".jsonl, .ndjson, .json, .xlsx, .ods; "
     "--input-format says it of any file"},
    {"text.parquet", "a,b\n1,2\n",
     "Parquet magic bytes not found in footer. Either the file is "
     "corrupted or this is not a parquet file."},
};

TEST(DelimitedFile, SaysWhatIsWrongAndWhere) {
  const ScratchFolder folder;
  for (const BadFile& one : kBadFiles) {
    EXPECT_EQ(ErrorOf(folder.Write(one.fName, one.fText)), one.fError) << one.fName;
  }
  EXPECT_EQ(ErrorOf(folder.Path("none.csv")), "No such file or directory");
}

TEST(DelimitedFile, HoldsDeclaredTypesToTheirWord) {
  const ScratchFolder folder;
  const std::string path = folder.Write("t.csv", "a,b\n1,x\n2.5,y\n");
  const auto error = [&](FieldType type) { return ErrorOf(path, {{}, {{"a", type}}}); };
  EXPECT_EQ(error(FieldType::kInteger),
            "line 3, column 1: \"2.5\" is not a whole number, as column \"a\" is declared");
  EXPECT_EQ(error(FieldType::kBoolean),
            "line 3, column 1: \"2.5\" is not a true or false value, as column \"a\" is declared");
  EXPECT_EQ(error(FieldType::kNumber), "no error");
  const auto table = OpenDataFile(path, {{}, {{"a", FieldType::kString}}}, TableStorage::kMemory);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("0:1", "1:2.5"));
}

TEST(DelimitedFile, IsNoDatabaseForTheLettersOfItsMark) {
  const ScratchFolder folder;
  const std::string path = folder.Write("t.csv", "animals,DUCK,GOOSE\nu,1,2\n");
  EXPECT_THAT(Dictionary(*OpenDataFile(path, {}, TableStorage::kMemory)),
              ElementsAre("animals:1", "DUCK:0", "GOOSE:0"));
  const std::string mark = std::string(8, 'x') + "DUCK" + std::string("\x40\0\0\0\0\0\0\0", 8);
  EXPECT_THAT(ErrorOf(folder.Write("t.db", mark)), testing::HasSubstr("the file is a database"));
}

TEST(DelimitedFile, HeaderAloneIsATableWithoutCases) {
  const ScratchFolder folder;
  for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
    const auto table = OpenDataFile(folder.Write("h.tsv", "a\t b\"\t\"c\td\""), {}, storage);
    EXPECT_THAT(Dictionary(*table), ElementsAre("a:0", " b\":0", "c\td:0"));
    EXPECT_EQ(table->CaseCount(), 0);
    EXPECT_TRUE(Cells(*table, 2).empty());
    SettleMeasurementLevels(*table);
  }
}

TEST(DelimitedFile, TypesAndPlacesDoNotDependOnWhereBlocksEnd) {
  // A few megabytes: the value that makes a column text, and the bad row, come in a late block.
  std::string text = "id,late,\"quoted\"\r\n";
  for (int i = 0; i < 200000; ++i) text += std::to_string(i) + ",7,\"a \"\"b\"\",\né\"\r\n";
  const ScratchFolder folder;
  const std::string path = folder.Write("t.csv", text + "9007199254740993,x,c\r\n");
  const auto memory = OpenDataFile(path, {}, TableStorage::kMemory);
  const auto streamed = OpenDataFile(path, {}, TableStorage::kStreamed);
  EXPECT_THAT(Dictionary(*memory), ElementsAre("id:0", "late:1", "quoted:9"));
  EXPECT_EQ(Contents(*memory), Contents(*streamed));
  EXPECT_EQ(memory->CaseCount(), 200001);
  EXPECT_THAT(
      memory->Notes(),
      ElementsAre("Column \"id\" holds whole numbers beyond 2^53, whose last digits are lost.",
                  "Column \"late\" holds texts instead of numbers because of 1 of its 200001 "
                  "cells: \"x\". --missing \"late=x\" takes it as missing."));
  EXPECT_EQ(memory->Notes(), streamed->Notes());
  EXPECT_EQ(ErrorOf(folder.Write("bad.csv", text + "1,2\r\n")),
            "line 400002, column 4: the row ends after 2 fields; the header has 3");
}

std::string VerdictOf(const std::string& text, std::size_t piece) {
  const CsvRules rules{',', {}, {{"n", FieldType::kNumber}}};
  CsvInspector inspector("t.csv", rules);
  try {
    for (std::size_t at = 0; at < text.size(); at += piece) {
      inspector.Feed(text.data() + at, std::min(piece, text.size() - at));
    }
    inspector.Finish();
  } catch (const HostIOError& error) {
    return error.what();
  }
  return inspector.Columns().at(0).fName + " " + std::to_string(inspector.CaseCount()) + " " +
         std::to_string(inspector.LongestRow());
}

TEST(DelimitedFile, TheVerdictDoesNotDependOnThePiecesThatTheFileComesIn) {
  const std::string mark = "\xEF\xBB\xBF";
  std::string longWord;
  for (int i = 0; i < 400; ++i) longWord += "猫ab";
  const std::pair<std::string, std::string> cases[] = {
      {mark + "a\n1\n", "a 1 1"},
      {mark + "\"a\"\r\n1\r\n2", "a 2 3"},
      {mark, "t.csv: there is no header row"},
      {"\xEF\xBB", "t.csv, line 1, column 1: the text ends within a character"},
      {"é\n1", "é 1 2"},
      {"n\n" + longWord + "\n",
       "t.csv, line 2, column 1: \"猫ab猫ab猫ab猫ab猫ab猫ab猫ab猫ab猫ab猫ab猫ab猫ab...\" is not a "
       "number, as column \"n\" is declared"},
  };
  for (const auto& [text, verdict] : cases) {
    for (const std::size_t piece : {1, 2, 3, 5, 4096}) {
      EXPECT_EQ(VerdictOf(text, piece), verdict) << "in pieces of " << piece;
    }
  }
}

TEST(DelimitedFile, FurtherNullTokensHoldInAllColumns) {
  const ScratchFolder folder;
  const auto table =
      OpenDataFile(folder.Write("t.csv", "a,b\n1,-\n-,x\n"), {{"-"}, {}}, TableStorage::kStreamed);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("1", "."));
  EXPECT_THAT(Cells(*table, 1), ElementsAre(".", "0:x"));
}

TEST(DelimitedFile, AFileThatChangesBetweenScansIsNoticed) {
  const ScratchFolder folder;
  const auto table = OpenDataFile(folder.Write("t.csv", "a\n1\n2\n"), {}, TableStorage::kStreamed);
  for (const char* changed : {"a\n1\n", "a\n1\n2\n3\n"}) {
    folder.Write("t.csv", changed);
    EXPECT_THROW(Cells(*table, 0), HostIOError) << changed;
  }
}

}  // namespace
}  // namespace MCHost
