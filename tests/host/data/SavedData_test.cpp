// What the data brought goes out as it came: every Arrow type in every format, the bytes of
// delimited text, and the text of columns whose values would say less.
#include <arrow/api.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/ipc/writer.h>
#include <arrow/json/from_string.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <parquet/arrow/reader.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/arrow/CsvKinds.h"
#include "host/arrow/DataFile.h"
#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/BatchSource.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using ArrayPtr = std::shared_ptr<arrow::Array>;
using TypePtr = std::shared_ptr<arrow::DataType>;

constexpr TableStorage kStorages[] = {TableStorage::kMemory, TableStorage::kStreamed};

ArrayPtr FromJson(const TypePtr& type, const std::string& json) {
  return arrow::json::ArrayFromJSONString(type, json).ValueOrDie();
}

ArrayPtr Codes(const TypePtr& indices, const TypePtr& values, const std::string& codes,
               const std::string& dictionary, bool isOrdered = false) {
  return arrow::DictionaryArray::FromArrays(arrow::dictionary(indices, values, isOrdered),
                                            FromJson(indices, codes), FromJson(values, dictionary))
      .ValueOrDie();
}

// The table of a Parquet or Arrow file, as its own reader gives it.
std::shared_ptr<arrow::Table> ReadColumns(const std::string& path) {
  const auto input = arrow::io::ReadableFile::Open(path).ValueOrDie();
  if (!path.ends_with(".parquet")) {
    return arrow::ipc::RecordBatchFileReader::Open(input).ValueOrDie()->ToTable().ValueOrDie();
  }
  const auto reader = parquet::arrow::OpenFile(input, arrow::default_memory_pool()).ValueOrDie();
  return reader->GetRecordBatchReader().ValueOrDie()->ToTable().ValueOrDie();
}

std::unique_ptr<DataTable> TableOf(std::unique_ptr<IArrowSource> source, TableStorage storage) {
  if (storage == TableStorage::kStreamed) return std::make_unique<StreamedTable>(std::move(source));
  return std::make_unique<MemoryTable>(std::move(source));
}

// Adds a number "new" that counts the cases from 0, the second of them missing.
void AddCounts(DataTable& table) {
  const int column = table.AddVariable(KOVA_Variable("new", 0));
  for (std::int64_t i = 0; i < table.CaseCount(); ++i) {
    const auto value = static_cast<double>(i);
    if (i != 1) table.WriteNumbers(column, i, &value, 1);
  }
}

struct TypeCase {
  ArrayPtr fArray;
  const char* fText;             // its cells in delimited text, a row each, behind them "new"
  TypePtr fInParquet = nullptr;  // the type that Parquet has for it; null for the same
};

std::vector<TypeCase> TypeCases() {
  using namespace arrow;
  const auto second = TimeUnit::SECOND, milli = TimeUnit::MILLI, micro = TimeUnit::MICRO,
             nano = TimeUnit::NANO;
  return {
      {FromJson(null(), "[null, null]"), ",0\n,\n"},
      {FromJson(boolean(), "[true, null, false]"), "true,0\n,\nfalse,2\n"},
      {FromJson(int8(), "[-128]"), "-128,0\n"},
      {FromJson(uint32(), "[4294967295]"), "4294967295,0\n"},
      {FromJson(int64(), "[9007199254740993, null, -9223372036854775808]"),
       "9007199254740993,0\n,\n-9223372036854775808,2\n"},
      {FromJson(uint64(), "[18446744073709551615]"), "18446744073709551615,0\n"},
      {FromJson(float16(), "[1.5, -0.1]"), "1.5,0\n-0.099975586,\n"},
      {FromJson(float32(), "[0.1, 16777216]"), "0.1,0\n16777216,\n"},
      {FromJson(float64(), "[0.1, -0.0, Inf, NaN, 1e300]"), "0.1,0\n-0,\ninf,2\nNaN,3\n1e+300,4\n"},
      {FromJson(decimal128(20, 2), R"(["-123456789012345678.25", "0.07"])"),
       "-123456789012345678.25,0\n0.07,\n"},
      {FromJson(decimal256(50, 1), R"(["100000000000000000000000000000000000000000.0"])"),
       "100000000000000000000000000000000000000000.0,0\n"},
      {FromJson(decimal128(5, 0), R"(["-12", "99999"])")->View(decimal128(5, -2)).ValueOrDie(),
       "-1200,0\n9999900,\n", decimal128(7, 0)},
      {FromJson(decimal64(10, 9), R"(["0.000000001"])"), "0.000000001,0\n"},
      {FromJson(date32(), "[-719529, 19782]"), "-0001-12-31,0\n2024-02-29,\n"},
      {FromJson(date64(), "[-86400000]"), "1969-12-31,0\n", date32()},
      {FromJson(timestamp(second), "[-1, 253402300800]"),
       "1969-12-31T23:59:59,0\n10000-01-01T00:00:00,\n", timestamp(milli)},
      {FromJson(timestamp(micro, "Europe/Berlin"), "[1500000, null]"),
       "1970-01-01T00:00:01.5Z,0\n,\n"},
      {FromJson(timestamp(nano), "[1709210096123456789]"), "2024-02-29T12:34:56.123456789,0\n"},
      {FromJson(time32(second), "[86399]"), "23:59:59,0\n", time32(milli)},
      {FromJson(time64(nano), "[1]"), "00:00:00.000000001,0\n"},
      {FromJson(duration(milli), "[-250, 7000]"), "-0.25,0\n7,\n"},
      {FromJson(utf8(), R"(["007", "", null, " a,\"b\"\n"])"),
       "007,0\n\"\",\n,2\n\" a,\"\"b\"\"\n\",3\n"},
      {FromJson(large_utf8(), R"(["é"])"), "é,0\n"},
      {FromJson(utf8_view(), R"(["longer than twelve bytes", null])"),
       "longer than twelve bytes,0\n,\n"},
      {Codes(int8(), utf8(), "[2, null, 1, 2]", R"(["unused", "red", "blue"])", true),
       "blue,0\n,\nred,2\nblue,3\n"},
      {Codes(uint64(), utf8(), "[0]", R"(["x"])"), "x,0\n"},
      {Codes(int32(), utf8(), "[0, 1]", R"([null, "x"])"), ",0\nx,\n"},
      {Codes(int32(), float64(), "[0]", "[2.5]"), "2.5,0\n", float64()},
      {Codes(int8(), date32(), "[0]", "[0]"), "1970-01-01,0\n", date32()},
  };
}

TEST(SavedData, EveryArrowTypeComesThroughEveryFormatWithItsValues) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("t.csv");
  for (const TypeCase& one : TypeCases()) {
    for (const TableStorage storage : kStorages) {
      SCOPED_TRACE(one.fArray->type()->ToString());
      const auto table =
          TableOf(std::make_unique<BatchSource>(
                      std::vector<std::pair<std::string, ArrayPtr>>{{"v", one.fArray}}, 2),
                  storage);
      AddCounts(*table);
      WriteDataFile(*table, csv);
      EXPECT_EQ(ReadFile(csv), "v,new\n" + std::string(one.fText));
      for (const char* name : {"t.feather", "t.parquet"}) {
        const bool isChanged = name[2] == 'p' && one.fInParquet != nullptr;
        WriteDataFile(*table, folder.Path(name));
        const auto saved = ReadColumns(folder.Path(name));
        EXPECT_TRUE(saved->column(1)->type()->Equals(arrow::float64()));
        EXPECT_TRUE(
            saved->column(0)->type()->Equals(isChanged ? *one.fInParquet : *one.fArray->type()))
            << saved->column(0)->type()->ToString();
        const auto cells = arrow::Concatenate(saved->column(0)->chunks()).ValueOrDie();
        const bool isSame = cells->Equals(one.fArray, arrow::EqualOptions().nans_equal(true));
        const bool hasNullEntry = one.fArray->type_id() == arrow::Type::DICTIONARY &&
                                  one.fArray->null_count() == 0 && cells->null_count() > 0;
        EXPECT_TRUE(isSame || isChanged || hasNullEntry) << cells->ToString();
        // Whatever became of the type: the values read back say the same.
        WriteDataFile(*OpenDataFile(folder.Path(name), {}, storage), csv);
        EXPECT_EQ(ReadFile(csv), "v,new\n" + std::string(one.fText)) << name;
      }
    }
  }
}

// A file of Arrow has one dictionary a column. Where those of the data do not go into one, it is
// written once more, of values.
TEST(SavedData, DictionariesThatChangeAreOneOrTheirValues) {
  using namespace arrow;
  std::string many = "[\"a0\"";
  for (int i = 1; i < 100; ++i) many += ", \"a" + std::to_string(i) + "\"";
  const TypePtr kept = dictionary(int8(), utf8());
  const struct {
    std::string fFirst;
    std::string fSecond;
    TypePtr fSaved;
    const char* fText;
  } cases[] = {
      {R"(["a", "b"])", R"(["c", "a"])", kept, "v,new\na,0\nb,\nc,2\na,3\n"},
      {R"([null, "b"])", R"(["c", "a"])", utf8(), "v,new\n,0\nb,\nc,2\na,3\n"},
      {R"(["b", "b"])", R"(["c", "a"])", utf8(), "v,new\nb,0\nb,\nc,2\na,3\n"},
      {many + "]",
       R"(["c", "a0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12",)"
       R"("13", "14", "15", "16", "17", "18", "19", "20", "21", "22", "23", "24", "25",)"
       R"("26", "27", "28", "29", "30"])",
       utf8(), "v,new\na0,0\na1,\nc,2\na0,3\n"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.fFirst);
    const ScratchFolder folder;
    std::filesystem::create_directory(folder.Path("t"));
    for (const auto& [name, words] :
         {std::pair("t/p1.arrow", one.fFirst), std::pair("t/p2.arrow", one.fSecond)}) {
      MemoryTable part(std::make_unique<BatchSource>(
          std::vector<std::pair<std::string, ArrayPtr>>{
              {"v", Codes(int8(), utf8(), "[0, 1]", words)}},
          10));
      WriteDataFile(part, folder.Path(name));
    }
    for (const TableStorage storage : kStorages) {
      const auto table = OpenDataFile(folder.Path("t"), {}, storage);
      AddCounts(*table);
      WriteDataFile(*table, folder.Path("t.arrow"));
      EXPECT_TRUE(ReadColumns(folder.Path("t.arrow"))->column(0)->type()->Equals(one.fSaved));
      WriteDataFile(*OpenDataFile(folder.Path("t.arrow"), {}, storage), folder.Path("t.csv"));
      EXPECT_EQ(ReadFile(folder.Path("t.csv")), one.fText);
    }
  }
}

// A column without nulls in one file may have them in the whole.
TEST(SavedData, AColumnMayBeNullWhereAFileMayBeSo) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path("t"));
  const auto write = [&folder](const std::string& name, const arrow::FieldVector& fields) {
    arrow::ArrayVector arrays(fields.size(), FromJson(arrow::int64(), "[1]"));
    const auto output = arrow::io::FileOutputStream::Open(folder.Path("t/" + name)).ValueOrDie();
    const auto writer = arrow::ipc::MakeFileWriter(output, arrow::schema(fields)).ValueOrDie();
    ASSERT_TRUE(
        writer->WriteRecordBatch(*arrow::RecordBatch::Make(arrow::schema(fields), 1, arrays)).ok());
    ASSERT_TRUE(writer->Close().ok());
  };
  const auto firm = [](const char* name) { return arrow::field(name, arrow::int64(), false); };
  write("p1.arrow", {firm("a"), firm("b"), firm("c")});
  write("p2.arrow", {firm("a"), arrow::field("b", arrow::int64())});
  const auto table = OpenDataFile(folder.Path("t"), {}, TableStorage::kMemory);
  WriteDataFile(*table, folder.Path("t.parquet"));
  const auto saved = ReadColumns(folder.Path("t.parquet"))->schema();
  EXPECT_FALSE(saved->field(0)->nullable());
  EXPECT_TRUE(saved->field(1)->nullable());
  EXPECT_TRUE(saved->field(2)->nullable());
}

// Quotes that are needed and that are not, blanks, spellings of numbers and of nulls, line ends of
// every kind, blank lines, a byte order mark and no line end at the end.
constexpr char kOdd[] =
    "\xEF\xBB\xBF"
    "id,\"zip, code\",x\r\n"
    "007,\"01234\", 1.50 \r\n"
    "\r\n"
    "008,\"a \"\"b\"\",\nc\",1e400\n"
    "\t9,5\",NA\r"
    "010,,\"0.10\"";

struct Copy {
  const char* fName;
  std::optional<std::vector<int>> fKeys;
  const char* fText;
};

TEST(SavedData, DelimitedTextIsCopiedByteForByte) {
  const Copy copies[] = {
      {"c.csv",
       {},
       "\xEF\xBB\xBF"
       "id,\"zip, code\",x,new\r\n"
       "007,\"01234\", 1.50 ,0\r\n"
       "\r\n"
       "008,\"a \"\"b\"\",\nc\",1e400,\n"
       "\t9,5\",NA,2\r"
       "010,,\"0.10\",3"},
      {"c.tsv",
       {},
       "\xEF\xBB\xBF"
       "id\t\"zip, code\"\tx\tnew\r\n"
       "007\t\"01234\"\t 1.50 \t0\r\n"
       "\r\n"
       "008\t\"a \"\"b\"\",\nc\"\t1e400\t\n"
       "\"\t9\"\t5\"\tNA\t2\r"
       "010\t\t\"0.10\"\t3"},
      {"c.csv",
       {{2, 0}},
       "\xEF\xBB\xBF"
       "x,id,new\r\n 1.50 ,007,0\r\n\r\n1e400,008,\nNA,\t9,2\r\"0.10\",010,3"},
      {"c.csv",
       {{}},
       "\xEF\xBB\xBF"
       "new\r\n0\r\n\r\n\"\"\n2\r3"},
  };
  const ScratchFolder folder;
  for (const TableStorage storage : kStorages) {
    const std::string path = folder.Write("t.csv", kOdd);
    const auto table = OpenDataFile(path, {}, storage);
    WriteDataFile(*table, folder.Path("same.csv"));
    EXPECT_EQ(ReadFile(folder.Path("same.csv")), kOdd);
    AddCounts(*table);
    for (const Copy& one : copies) {
      WriteDataFile(*table, folder.Path(one.fName), one.fKeys ? &*one.fKeys : nullptr);
      EXPECT_EQ(ReadFile(folder.Path(one.fName)), one.fText);
    }
  }
}

TEST(SavedData, SemicolonsAreKeptWhereTextIsWrittenAnew) {
  const ScratchFolder folder;
  for (const char* text : {"a;b\n1,5;x\n2,25;y\n", "1.5;x\n2.25;y\n"}) {
    const auto table = OpenDataFile(folder.Write("t.csv", text), {}, TableStorage::kMemory);
    WriteDataFile(*table, folder.Path("c.csv"));
    const std::string names =
        table->GetVariable(0).GetName() + ";" + table->GetVariable(1).GetName();
    EXPECT_EQ(ReadFile(folder.Path("c.csv")), names + "\n1.5;x\n2.25;y\n");
  }
}

TEST(SavedData, RecordsAreCopiedWhereverThePiecesOfTheFileEnd) {
  std::string text = "a,b\r\n";
  for (int i = 0; i < 3000; ++i) {
    text += "\"" + std::string(static_cast<std::size_t>(i % 1500), 'x') + "\"\"\r\n\"," +
            std::to_string(i) + "\r\n";
  }
  text += "\"" + std::string(3000000, 'y') + "\",1\r\n";  // more than a piece holds
  const ScratchFolder folder;
  const auto table = OpenDataFile(folder.Write("t.csv", text), {}, TableStorage::kMemory);
  WriteDataFile(*table, folder.Path("same.csv"));
  EXPECT_TRUE(ReadFile(folder.Path("same.csv")) == text);
}

TEST(SavedData, TextBecomesColumnsThatLoseNothingOfIt) {
  using namespace arrow;
  const struct {
    const char* fCells;
    TypePtr fType;
    const char* fJson;
  } cases[] = {
      {"1\n -2 \nNA", int64(), "[1, -2, null]"},
      {"9007199254740993\n\"-9223372036854775808\"", int64(),
       "[9007199254740993, -9223372036854775808]"},
      {"9223372036854775809\n1", utf8(), R"(["9223372036854775809", "1"])"},
      {"1\n2.50\n1e3\n3.1415926535897931", float64(), "[1, 2.5, 1000, 3.141592653589793]"},
      {"1.234567890123456781e-05\n-inf", float64(), "[1.2345678901234567e-05, -Inf]"},
      {"-0\n1", float64(), "[-0.0, 1]"},
      {"007\n1", utf8(), R"(["007", "1"])"},
      {"-01.5\n1", utf8(), R"(["-01.5", "1"])"},
      {"1e400\n1", utf8(), R"(["1e400", "1"])"},
      {"1e-400\n1", utf8(), R"(["1e-400", "1"])"},
      {"\"0.12345678901234567890\"\nNA", utf8(), R"(["0.12345678901234567890", null])"},
      {"0.12345678901234568\n0.12345678901234567", utf8(),
       R"(["0.12345678901234568", "0.12345678901234567"])"},
      {"true\nFALSE\nNA", boolean(), "[true, false, null]"},
      {"2024-02-29\nnull", date32(), "[19782, null]"},
      {"1970-01-01 00:00:01.5\n1970-01-01", timestamp(TimeUnit::MICRO), "[1500000, 0]"},
      {"1970-01-01T00:00:01Z", timestamp(TimeUnit::MICRO, "UTC"), "[1000000]"},
      {"1970-01-01T02:00:00+02:00", utf8(), R"(["1970-01-01T02:00:00+02:00"])"},
      {"00:01", time64(TimeUnit::MICRO), "[60000000]"},
      // More than six digits are nanoseconds, in the years that these have.
      {"1970-01-01 00:00:01.123456789\n1970-01-02", timestamp(TimeUnit::NANO),
       "[1123456789, 86400000000000]"},
      {"1970-01-01T00:00:01.1234567Z", timestamp(TimeUnit::NANO, "UTC"), "[1123456700]"},
      {"1970-01-01 00:00:01.1234567\n9999-01-01", utf8(),
       R"(["1970-01-01 00:00:01.1234567", "9999-01-01"])"},
      {"00:01\n00:00:00.000000001", time64(TimeUnit::NANO), "[60000000000, 1]"},
      {"NA\nnull", null(), "[null, null]"},
      {"x\n\"\"\n01", utf8(), R"(["x", null, "01"])"},
  };
  const ScratchFolder folder;
  for (const auto& one : cases) {
    SCOPED_TRACE(one.fCells);
    std::string text = "k,v\n7,";
    for (const char* c = one.fCells; *c != '\0'; ++c)
      text += *c == '\n' ? "\n7," : std::string(1, *c);
    for (const TableStorage storage : kStorages) {
      const auto table = OpenDataFile(folder.Write("t.csv", text + "\n"), {}, storage);
      AddCounts(*table);
      const std::vector<int> keys = {1, 0};
      for (const auto* chosen : {static_cast<const std::vector<int>*>(nullptr), &keys}) {
        WriteDataFile(*table, folder.Path("t.parquet"), chosen);
        const auto saved = ReadColumns(folder.Path("t.parquet"));
        const auto cells = saved->GetColumnByName("v")->chunk(0);
        EXPECT_TRUE(cells->Equals(FromJson(one.fType, one.fJson)))
            << cells->type()->ToString() << cells->ToString();
        EXPECT_EQ(saved->schema()->field_names(),
                  chosen == nullptr ? (std::vector<std::string>{"k", "v", "new"})
                                    : (std::vector<std::string>{"v", "k", "new"}));
      }
    }
  }
}

// By printing at full length, where the fast ways to tell it go by whole numbers.
TEST(SavedData, ANumberIsHeldWhereItsDoublePrintsTheSameDigits) {
  std::uint64_t state = 1;
  int nHeld = 0;
  for (int i = 0; i < 20000; ++i) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    std::string text = std::to_string(state >> 8).substr(0, 15 + i % 4);
    text.insert(static_cast<std::size_t>(i % 7) + 1, ".");
    if (text.starts_with("0") && text[1] != '.') continue;
    char printed[64];
    std::snprintf(printed, sizeof(printed), "%.*f",
                  static_cast<int>(text.size() - text.find('.') - 1), std::stod(text));
    ASSERT_EQ(CsvHoldsDigits(text), text == printed) << text;
    nHeld += text == printed;
  }
  EXPECT_GT(nHeld, 5000);
  EXPECT_LT(nHeld, 15000);
}

TEST(SavedData, ColumnsThatAreNotReadSideBySideComeTogetherAgain) {
  arrow::Int64Builder wide;
  for (std::int64_t i = 0; i < 5000; ++i) ASSERT_TRUE(wide.Append((1LL << 60) + i).ok());
  const ArrayPtr numbers = wide.Finish().ValueOrDie();
  const std::vector<std::pair<std::string, ArrayPtr>> columns = {
      {"a", numbers}, {"b", numbers->Slice(0)}, {"c", numbers}};
  const ScratchFolder folder;
  StreamedTable table(std::make_unique<BatchSource>(columns, 777, 1));
  AddCounts(table);
  for (const char* name : {"t.feather", "t.parquet"}) {
    const std::vector<int> keys = {2, 0};
    WriteDataFile(table, folder.Path(name), &keys);
    const auto saved = ReadColumns(folder.Path(name));
    EXPECT_EQ(saved->schema()->field_names(), (std::vector<std::string>{"c", "a", "new"}));
    EXPECT_TRUE(saved->column(1)->Equals(arrow::ChunkedArray(numbers)));
  }
}

TEST(SavedData, LinesHoldWhatTheFileHas) {
  const ScratchFolder folder;
  const std::string path = folder.Write(
      "t.csv",
      "n,\"a "
      "\"\"|b\",d,f,c\n1,\"x|y\"\"\",2024-02-29,true,inf\n,\"p\nq\",,false,0.5\n1e20,,,,-3\n");
  const auto table = OpenDataFile(path, {}, TableStorage::kMemory);
  AddCounts(*table);
  for (const auto& [name, lines] : std::map<std::string, std::string>{
           {"t.jsonl",
            "{\"n\":1,\"a "
            "\\\"|b\":\"x|y\\\"\",\"d\":\"2024-02-29\",\"f\":true,\"c\":null,\"new\":0}\n"
            "{\"n\":null,\"a \\\"|b\":\"p\\nq\",\"d\":null,\"f\":false,\"c\":0.5,\"new\":null}\n"
            "{\"n\":1e+20,\"a \\\"|b\":null,\"d\":null,\"f\":null,\"c\":-3,\"new\":2}\n"},
           {"t.md",
            "| n | a \"\\|b | d | f | c | new |\n| ---: | --- | --- | --- | ---: | ---: |\n"
            "| 1 | x\\|y\" | 2024-02-29 | true | inf | 0 |\n|  | p q |  | false | 0.5 |  |\n"
            "| 1e+20 |  |  |  | -3 | 2 |\n"}}) {
    WriteDataFile(*table, folder.Path(name));
    EXPECT_EQ(ReadFile(folder.Path(name)), lines);
  }
}

TEST(SavedData, AFileThatIsNoLongerTheOneThatWasReadIsNotSaved) {
  const ScratchFolder folder;
  for (const char* name : {"out.csv", "out.parquet"}) {
    const std::string path = folder.Write("t.csv", "a,d\n1,2024-02-29\n2,2024-02-29\n");
    const auto table = OpenDataFile(path, {}, TableStorage::kMemory);
    AddCounts(*table);
    std::filesystem::rename(folder.Write("u.csv", "a,d\n3,2024-02-28\n4,2024-02-28\n"), path);
    EXPECT_THROW(WriteDataFile(*table, folder.Path(name)), HostIOError);
  }
  EXPECT_THAT(folder.Files(), testing::ElementsAre("t.csv"));
}

}  // namespace
}  // namespace MCHost
