// Folders and patterns of files as one table.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/arrow/DataParts.h"
#include "host/data/MemoryTable.h"
#include "host/session/HostIOError.h"
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
  EXPECT_THAT(ErrorOf(folder.Path("q*.csv")), EndsWith("no file fits the pattern"));
  std::filesystem::create_directory(folder.Path("empty"));
  EXPECT_THAT(ErrorOf(folder.Path("empty")), EndsWith("no file that is called as data"));
}

TEST(JoinedFiles, APartThatBreaksThePromiseOfItsStartIsReadAgain) {
  const ScratchFolder folder;
  std::string large = "a,b\n";
  for (int i = 0; i < 300000; ++i) large += "1,22\n";
  folder.Write("p1.csv", large);
  folder.Write("p2.csv", large + "x,3\n");
  folder.Write("p3.csv", "a,b\n1,\n2\n");
  const auto whole = OpenDataFile(folder.Path("p[12].csv"), {}, TableStorage::kStreamed);
  const auto started = OpenDataFile(folder.Path("p[12].csv"), {}, TableStorage::kMemory);
  EXPECT_THAT(Dictionary(*started), ElementsAre("a:1", "b:0"));
  EXPECT_EQ(started->Notes(), whole->Notes());
  EXPECT_EQ(started->CaseCount(), 600001);
  EXPECT_EQ(Cells(*started, 0), Cells(*whole, 0));
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
