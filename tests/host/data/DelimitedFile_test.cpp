#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
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

}  // namespace
}  // namespace MCHost
