// Folders and patterns of files as one table.
#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/json/from_string.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/arrow/DataParts.h"
#include "host/arrow/JoinedSource.h"
#include "host/data/MemoryTable.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/BatchSource.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr TableStorage kStorages[] = {TableStorage::kMemory, TableStorage::kStreamed,
                                      TableStorage::kOnce};

// A file of any format with the cells of a text.
void WriteAs(const ScratchFolder& folder, const std::string& name, const std::string& text) {
  const std::string path = folder.Path(name);
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  const auto table = OpenDataFile(folder.Write("plain.csv", text), {}, TableStorage::kMemory);
  WriteDataFile(*table, path);
  std::filesystem::remove(folder.Path("plain.csv"));
}

std::string ErrorOf(const std::string& path) {
  try {
    OpenDataFile(path, {}, TableStorage::kMemory);
  } catch (const HostIOError& error) {
    return error.what();
  }
  return "no error";
}

using ArrayPtr = std::shared_ptr<arrow::Array>;
using TypePtr = std::shared_ptr<arrow::DataType>;

ArrayPtr FromJson(const TypePtr& type, const std::string& json) {
  return arrow::json::ArrayFromJSONString(type, json).ValueOrDie();
}

// Parts with a column "v" of these cells; null for a part without it. Each has a column "x", too.
JoinedSource Joined(const std::vector<DataPart>& parts, const std::vector<ArrayPtr>& cells) {
  const auto open = [=](const DataPart& part, const std::set<std::string>&) {
    const auto place = part.fPath.back() - '0';
    std::vector<std::pair<std::string, ArrayPtr>> columns = {{"x", FromJson(arrow::int8(), "[0]")}};
    if (cells[place] != nullptr) columns.emplace_back("v", cells[place]);
    return std::make_unique<BatchSource>(std::move(columns), 10);
  };
  return {"parts", parts, open};
}

// The column "v" as it would be saved.
ArrayPtr SavedCells(JoinedSource& source) {
  ArrowArrayStream stream{};
  source.OpenOriginal(nullptr, &stream);
  const auto reader = arrow::ImportRecordBatchReader(&stream).ValueOrDie();
  const auto column = reader->ToTable().ValueOrDie()->GetColumnByName("v");
  return arrow::Concatenate(column->chunks()).ValueOrDie();
}

TEST(JoinedFiles, AreOneTableInTheirNaturalOrderWithTheKeysOfTheirFolders) {
  for (const char* ending : {".csv", ".parquet", ".arrow", ".feather"}) {
    const std::string end = ending;
    const ScratchFolder folder;
    WriteAs(folder, "t/year=2024/part-10" + end, "a,b\n4,w\n");
    WriteAs(folder, "t/year=2024/part-9" + end, "a,b\n3,z\n");
    WriteAs(folder, "t/year=2023/part-0" + end, "b,a\nx,1\ny,2.5\n");
    folder.Write("t/_SUCCESS", "");
    folder.Write("t/.hidden" + end, "x");
    for (const std::string& path :
         {std::string("t"), "t/*/part-*" + end, "t/year=202{3,4}/*" + end}) {
      for (const TableStorage storage : kStorages) {
        SCOPED_TRACE(path);
        const auto table = OpenDataFile(folder.Path(path), {}, storage);
        EXPECT_THAT(Dictionary(*table), ElementsAre("b:1", "a:0", "year:0"));
        EXPECT_THAT(Cells(*table, 0), ElementsAre("0:x", "1:y", "2:z", "3:w"));
        EXPECT_THAT(Cells(*table, 1), ElementsAre("1", "2.5", "3", "4"));
        EXPECT_THAT(Cells(*table, 2), ElementsAre("2023", "2023", "2024", "2024"));
        EXPECT_TRUE(table->Notes().empty());
        WriteDataFile(*table, folder.Path("whole.csv"));
        EXPECT_EQ(Contents(*OpenDataFile(folder.Path("whole.csv"), {}, storage)), Contents(*table));
      }
    }
  }
}

TEST(JoinedFiles, TellWhereTheyDiffer) {
  const ScratchFolder folder;
  WriteAs(folder, "p1.csv", "a,b,d\n1,007,2024-01-01\n");
  WriteAs(folder, "p2.csv", "a,c\n2.5,x\n");
  WriteAs(folder, "p3.csv", "a,b\n3,7x\n");
  for (const TableStorage storage : kStorages) {
    const auto table = OpenDataFile(folder.Path("p*.csv"), {}, storage);
    EXPECT_THAT(Dictionary(*table), ElementsAre("a:0", "b:3", "d:0", "c:1"));
    EXPECT_THAT(Cells(*table, 1), ElementsAre("0:007", ".", "1:7x"));
    EXPECT_THAT(Cells(*table, 3), ElementsAre(".", "0:x", "."));
    const std::vector<std::string> notes = table->Notes();
    ASSERT_EQ(notes.size(), 5U);
    EXPECT_THAT(notes[0], HasSubstr("\"b\" holds numbers in " + folder.Path("p1.csv") +
                                    ", but texts in " + folder.Path("p3.csv")));
    EXPECT_THAT(notes[1], HasSubstr("\"b\" is not in " + folder.Path("p2.csv") + "; it is"));
    EXPECT_THAT(notes[2], HasSubstr("\"d\" is not in " + folder.Path("p2.csv") + " and 1 more;"));
  }
}

TEST(JoinedFiles, OfFixedTypesThatDoNotFitAreRefusedByName) {
  const ScratchFolder folder;
  WriteAs(folder, "p1.parquet", "a\n1\n");
  WriteAs(folder, "p2.parquet", "a\nx\n");
  EXPECT_EQ(ErrorOf(folder.Path("p?.parquet")), folder.Path("p2.parquet") +
                                                    ": column \"a\" holds texts, but numbers in " +
                                                    folder.Path("p1.parquet"));
  DataFileOptions options;
  options.fReading.fMissing = {{"a", {"foo"}}};
  for (const char* path : {"p1.parquet", "p[1].parquet"}) {
    EXPECT_THROW(OpenDataFile(folder.Path(path), options, TableStorage::kMemory), HostIOError)
        << path;
  }
  MemoryTable nothing;
  WriteDataFile(nothing, folder.Path("nothing.parquet"));
  EXPECT_THAT(ErrorOf(folder.Path("nothing.parquet")), EndsWith("there are no columns in it"));
  EXPECT_THAT(ErrorOf(folder.Path("q*.csv")), EndsWith("no file fits the pattern"));
  std::filesystem::create_directory(folder.Path("empty"));
  EXPECT_THAT(ErrorOf(folder.Path("empty")), EndsWith("no file that is called as data"));
}

// One with a text in it, or none for an empty one.
testing::Matcher<std::vector<std::string>> NotesOf(const std::string& text) {
  if (text.empty()) return testing::IsEmpty();
  return ElementsAre(HasSubstr(text));
}

TEST(JoinedFiles, KeepWhatTheirTypesSayInOneThatHoldsBoth) {
  using namespace arrow;
  const auto second = TimeUnit::SECOND, milli = TimeUnit::MILLI, micro = TimeUnit::MICRO,
             nano = TimeUnit::NANO;
  struct Case {
    ArrayPtr fFirst;
    ArrayPtr fSecond;
    ArrayPtr fSaved;
    std::vector<std::string> fRead;
  };
  const ArrayPtr whole = FromJson(int32(), "[1]");
  const Case cases[] = {
      {whole,
       FromJson(int64(), "[9007199254740993]"),
       FromJson(int64(), "[1, 9007199254740993]"),
       {"1", "9007199254740992"}},
      {FromJson(boolean(), "[true]"),
       FromJson(uint64(), "[18446744073709551615]"),
       FromJson(uint64(), "[1, 18446744073709551615]"),
       {"1", "1.8446744073709552e+19"}},
      {FromJson(int8(), "[-1]"),
       FromJson(uint64(), "[18446744073709551615]"),
       FromJson(decimal128(20, 0), R"(["-1", "18446744073709551615"])"),
       {"-1", "1.8446744073709552e+19"}},
      {FromJson(decimal128(4, 2), R"(["12.25"])"),
       FromJson(decimal64(6, 5), R"(["0.12345"])"),
       FromJson(decimal128(7, 5), R"(["12.25000", "0.12345"])"),
       {"12.25", "0.12345"}},
      {FromJson(decimal128(38, 30), R"(["0.500000000000000000000000000000"])"),
       whole,
       FromJson(decimal256(50, 30),
                R"(["0.500000000000000000000000000000", "1.000000000000000000000000000000"])"),
       {"0.5", "1"}},
      {FromJson(decimal128(4, 2), R"(["12.25"])"),
       FromJson(float32(), "[0.5]"),
       FromJson(float64(), "[12.25, 0.5]"),
       {"12.25", "0.5"}},
      {FromJson(timestamp(micro, "UTC"), "[2000000]"),
       FromJson(timestamp(nano, "UTC"), "[1001]"),
       FromJson(timestamp(nano, "UTC"), "[2000000000, 1001]"),
       {"2", "9.9999999999999995e-07"}},
      // A year that nanoseconds do not have.
      {FromJson(timestamp(second), "[253402300799]"),
       FromJson(timestamp(nano), "[0]"),
       nullptr,
       {"253402300799", "0"}},
      {FromJson(date32(), "[1]"),
       FromJson(timestamp(milli), "[1500]"),
       FromJson(timestamp(milli), "[86400000, 1500]"),
       {"86400", "1.5"}},
      {FromJson(date32(), "[1]"),
       FromJson(date64(), "[172800000]"),
       FromJson(date64(), "[86400000, 172800000]"),
       {"1", "2"}},
      {FromJson(time32(second), "[5]"),
       FromJson(time64(nano), "[1]"),
       FromJson(time64(nano), "[5000000000, 1]"),
       {"5", "1.0000000000000001e-09"}},
      {FromJson(duration(second), "[5]"),
       FromJson(duration(milli), "[-1]"),
       FromJson(duration(milli), "[5000, -1]"),
       {"5", "-0.001"}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.fFirst->type()->ToString() + ", " + one.fSecond->type()->ToString());
    JoinedSource source = Joined({{"0", {}}, {"1", {}}}, {one.fFirst, one.fSecond});
    if (one.fSaved != nullptr) {
      const ArrayPtr saved = SavedCells(source);
      EXPECT_TRUE(saved->Equals(one.fSaved)) << saved->type()->ToString() << saved->ToString();
    }
    MemoryTable table(source);
    EXPECT_EQ(Cells(table, 1), one.fRead);
  }
}

TEST(JoinedFiles, TakeTheNamesOfFoldersAsTheTypeThatFilesHave) {
  struct Case {
    const char* fKey;
    ArrayPtr fCells;  // of the part that has the column
    std::vector<std::string> fRead;
    const char* fNote = "";
  };
  const Case cases[] = {
      {"2", FromJson(arrow::int64(), "[3]"), {"2", "3"}},
      {"300", FromJson(arrow::int8(), "[3]"), {"300", "3"}},
      {"2.5", FromJson(arrow::int64(), "[3]"), {"2.5", "3"}},
      {"true", FromJson(arrow::boolean(), "[false]"), {"1", "0"}},
      {"2", FromJson(arrow::boolean(), "[true]"), {"2", "1"}},
      {"abc",
       FromJson(arrow::int64(), "[0]"),
       {".", "0"},
       R"(Column "v" holds numbers, and the folder "v=abc" of 0 names none; it is missing)"},
      {"1970-01-03", FromJson(arrow::date32(), "[1]"), {"2", "1"}},
      {"soon", FromJson(arrow::date32(), "[1]"), {".", "1"}, R"("v" holds dates or times, and)"},
      {"7", FromJson(arrow::utf8(), R"(["a"])"), {"0:7", "1:a"}},
      {"1970-01-02",
       FromJson(arrow::timestamp(arrow::TimeUnit::MICRO, "UTC"), "[1000000]"),
       {"86400", "1"}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.fKey);
    JoinedSource source = Joined({{"0", {{"v", one.fKey}}}, {"1", {}}}, {nullptr, one.fCells});
    EXPECT_THAT(source.Notes(), NotesOf(one.fNote));
    MemoryTable table(source);
    EXPECT_EQ(Cells(table, 1), one.fRead);
  }
}

TEST(JoinedFiles, OfTypesThatDoNotGoTogetherAreTextsWhereTheyAreText) {
  struct Case {
    const char* fFirst;  // of a column "a", the first file's name before them
    const char* fSecond;
    std::vector<std::string> fRead;
    const char* fSaved;
    const char* fNote = "";
  };
  const Case cases[] = {
      {"p1.csv\na\n2024\n",
       "p2.csv\na\n2024-01-01\n",
       {"0:2024", "1:2024-01-01"},
       "a\n2024\n2024-01-01\n",
       "p1.csv; it is read as texts."},
      {"p1.csv\na\n12:30\n",
       "p2.csv\na\n2024-01-01\n",
       {"0:12:30", "1:2024-01-01"},
       "a\n12:30\n2024-01-01\n",
       "but times of day in "},
      // Saved, texts that say more than their values make the others texts, too.
      {"p1.csv\na\n007\n", "p2.csv\na\n12\n", {"7", "12"}, "a\n007\n12\n"},
      {"p1.csv\na\n003\n", "p2.jsonl\n{\"a\":1.5}\n", {"3", "1.5"}, "a\n003\n1.5\n"},
      {"p1.csv\na\n0.12345678901234567890\n",
       "p2.csv\na\n12\n",
       {"0.12345678901234568", "12"},
       "a\n0.12345678901234567890\n12\n"},
  };
  const auto write = [](const ScratchFolder& folder, const std::string& file) {
    const std::size_t end = file.find('\n');
    folder.Write(file.substr(0, end), file.substr(end + 1));
  };
  for (const Case& one : cases) {
    for (const TableStorage storage : kStorages) {
      SCOPED_TRACE(one.fFirst);
      const ScratchFolder folder;
      write(folder, one.fFirst);
      write(folder, one.fSecond);
      const auto table = OpenDataFile(folder.Path("p*"), {}, storage);
      EXPECT_EQ(Cells(*table, 0), one.fRead);
      EXPECT_THAT(table->Notes(), NotesOf(one.fNote));
      WriteDataFile(*table, folder.Path("whole.csv"));
      EXPECT_EQ(ReadFile(folder.Path("whole.csv")), one.fSaved);
    }
  }
}

TEST(JoinedFiles, OfTextMaySaveTimesOfAllYearsBesideNanoseconds) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path("in"));
  folder.Write("in/1.csv", "t\n2024-01-01T10:00:00.123456789\n");
  folder.Write("in/2.csv", "t\n9999-12-31\n");
  const auto table = OpenDataFile(folder.Path("in"), {}, TableStorage::kMemory);
  for (const char* name : {"out.csv", "out.parquet"}) {
    WriteDataFile(*table, folder.Path(name));
    const auto saved = OpenDataFile(folder.Path(name), {}, TableStorage::kMemory);
    EXPECT_THAT(Cells(*saved, 0), ElementsAre("0:2024-01-01T10:00:00.123456789", "1:9999-12-31"));
  }
}

TEST(JoinedFiles, WithANameTwiceAreRefusedAsTheyAreAlone) {
  const auto open = [](const DataPart& part, const std::set<std::string>&) {
    const auto numbers = FromJson(arrow::int64(), "[1]");
    const auto texts = FromJson(arrow::utf8(), R"(["a"])");
    using Columns = std::vector<std::pair<std::string, ArrayPtr>>;
    return std::make_unique<BatchSource>(
        part.fPath == "0" ? Columns{{"v", numbers}, {"v", texts}} : Columns{{"v", numbers}}, 10);
  };
  const auto twice = [&] { JoinedSource("parts", {{"0", {}}, {"1", {}}}, open); };
  EXPECT_THAT(twice, testing::ThrowsMessage<HostIOError>(testing::HasSubstr("is there already")));
}

TEST(JoinedFiles, AreAllThatAreCalledAsDataEachOnce) {
  const ScratchFolder folder;
  std::filesystem::create_directory(folder.Path("t"));
  folder.Write("t/a1.csv", "x\n1\n");
  folder.Write("t/b.CSV", "x\n2\n");
  for (const char* path : {"t", "t/{a*,a1,b}.[cC]*"}) {
    EXPECT_THAT(Cells(*OpenDataFile(folder.Path(path), {}, TableStorage::kMemory), 0),
                ElementsAre("1", "2"))
        << path;
  }
}

TEST(JoinedFiles, APartThatBreaksThePromiseOfItsStartIsReadAgain) {
  const ScratchFolder folder;
  std::string large = "a,b\n";
  for (int i = 0; i < 300000; ++i) large += "1,22\n";
  folder.Write("p1.csv", large);
  folder.Write("p2.csv", large + "x,3\n");
  folder.Write("p3.csv", "a,b\n1,\n2\n");
  folder.Write("p4.csv", large + "4,y\n");
  const auto whole = OpenDataFile(folder.Path("p[12].csv"), {}, TableStorage::kStreamed);
  const auto started = OpenDataFile(folder.Path("p[12].csv"), {}, TableStorage::kMemory);
  EXPECT_THAT(Dictionary(*started), ElementsAre("a:1", "b:0"));
  EXPECT_EQ(started->Notes(), whole->Notes());
  EXPECT_EQ(started->CaseCount(), 600001);
  EXPECT_EQ(Cells(*started, 0), Cells(*whole, 0));
  // Each of the two has texts late that make the other one's column text.
  const auto both = OpenDataFile(folder.Path("p[24].csv"), {}, TableStorage::kMemory);
  EXPECT_THAT(Dictionary(*both), ElementsAre("a:1", "b:2"));
  EXPECT_THAT(Cells(*both, 1).back(), EndsWith(":y"));
  EXPECT_EQ(both->Notes(),
            OpenDataFile(folder.Path("p[24].csv"), {}, TableStorage::kStreamed)->Notes());
  EXPECT_EQ(
      ErrorOf(folder.Path("p[13].csv")),
      folder.Path("p3.csv") + ", line 3, column 2: the row ends after 1 field; the header has 2");
}

TEST(JoinedFiles, AreOrderedByTheNumbersInTheirNames) {
  std::vector<std::string> names = {"b", "a10", "a9", "a", "a09", "a9b1", "a2/x", "a10/x"};
  std::sort(names.begin(), names.end(), IsNaturallyBefore);
  EXPECT_THAT(names, ElementsAre("a", "a2/x", "a09", "a9", "a9b1", "a10", "a10/x", "b"));
}

}  // namespace
}  // namespace MCHost
