// Scans, new variables, writing and the files that appear whole or not at all.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/data/KOVA_DataSource.h"
#include "host/data/MemoryTable.h"
#include "host/session/HostIOError.h"
#include "host/session/NewFolder.h"
#include "host/session/OutputFile.h"
#include "host/session/OutputGroup.h"
#include "host/session/Unfinished.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr const char* kFormats[] = {"t.csv", "t.tsv", "t.parquet", "t.feather", "t.arrow"};

// Numbers of every kind and strings that delimited text must quote, with missing cells.
MemoryTable Mixed(int cases) {
  std::mt19937 random(7);
  const std::vector<std::optional<std::string>> words = {"red", "a,b\t\"c\"", "two\nlines", " é ",
                                                         std::nullopt};
  std::vector<double> whole, real;
  std::vector<std::optional<std::string>> text;
  for (int i = 0; i < cases; ++i) {
    whole.push_back(i % 7 == 0 ? KOVA_SystemMissing : static_cast<double>(random() % 1000) - 500);
    real.push_back(i % 5 == 0 ? std::nan("")
                              : std::ldexp(random() / 3.0, static_cast<int>(random() % 600) - 300));
    text.push_back(words[random() % words.size()]);
  }
  MemoryTable table;
  table.AddNumbers("whole number", whole);
  table.AddNumbers("real", real);
  table.AddStrings("\"quoted\", é", text);
  return table;
}

TEST(Tables, ReadBackWhatTheyWroteInEveryFormatAndStorage) {
  const ScratchFolder folder;
  for (const int cases : {0, 1, 10001}) {
    MemoryTable table = Mixed(cases);
    const auto contents = Contents(table);
    for (const char* name : kFormats) {
      SCOPED_TRACE(std::string(name) + ", " + std::to_string(cases));
      WriteDataFile(table, folder.Path(name));
      for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
        const auto again = OpenDataFile(folder.Path(name), {}, storage);
        EXPECT_EQ(again->CaseCount(), cases);
        // Delimited text without cases does not tell what its columns would hold.
        if (cases > 0) {
          EXPECT_EQ(Contents(*again), contents);
        }
      }
    }
  }
}

TEST(Tables, ForOneScanLargeFilesAreKeptOnlyWhereThereIsNoRoomOnDisk) {
  constexpr int kCases = 60000;
  constexpr int kColumns = 24;
  const ScratchFolder folder;
  std::vector<double> values(kCases);
  for (int i = 0; i < kCases; ++i) values[static_cast<std::size_t>(i)] = std::sqrt(i + 2.0);
  MemoryTable table;
  for (int j = 0; j < kColumns; ++j) table.AddNumbers("x" + std::to_string(j), values);
  const std::string large = folder.Path("large.csv");
  WriteDataFile(table, large);
  const std::string small = folder.Write("small.csv", "a\n1\n");
  const std::string bad = folder.Write("bad.csv", "a\n1" + std::string(1 << 25, '1') + ",2\n");
  const auto open = [](const std::string& path) {
    return OpenDataFile(path, {}, TableStorage::kOnce);
  };
  EXPECT_FALSE(open(large)->KeepsCells());
  EXPECT_TRUE(open(small)->KeepsCells());
  EXPECT_THROW(open(bad), HostIOError);
  const char* was = std::getenv("TMPDIR");
  const std::string saved = was != nullptr ? was : "";
  for (const char* full : {"/proc", "/proc/none"}) {
    setenv("TMPDIR", full, 1);
    const auto kept = open(large);
    EXPECT_TRUE(kept->KeepsCells()) << full;
    EXPECT_EQ(kept->CaseCount(), kCases);
  }
  was != nullptr ? setenv("TMPDIR", saved.c_str(), 1) : unsetenv("TMPDIR");
}

TEST(Tables, CellsThatTakeMoreThanTheyMayAreNotKept) {
  const ScratchFolder folder;
  MemoryTable table = Mixed(20001);
  const auto contents = Contents(table);
  for (const char* name : kFormats) {
    WriteDataFile(table, folder.Path(name));
    DataFileOptions options;
    const auto open = [&] {
      return OpenDataFile(folder.Path(name), options, TableStorage::kMemory);
    };
    // Whole numbers of two bytes, doubles, and codes of one.
    const std::size_t bytes = open()->KeptBytes();
    EXPECT_NEAR(static_cast<double>(bytes), 20001.0 * 11.0, 3000.0) << name;
    for (const bool isRoom : {true, false}) {
      options.fMaxKeptBytes = isRoom ? bytes : bytes / 2;
      const auto bounded = open();
      EXPECT_EQ(bounded->KeepsCells(), isRoom) << name;
      EXPECT_EQ(Contents(*bounded), contents) << name;
    }
  }
}

TEST(Tables, DelimitedTextIsPlainAndExact) {
  const ScratchFolder folder;
  MemoryTable table;
  table.AddNumbers("x", {1, 1e15, 0.1, 1e300, -0.5, KOVA_SystemMissing});
  WriteDataFile(table, folder.Path("t.csv"));
  EXPECT_EQ(ReadFile(folder.Path("t.csv")), "x\n1\n1000000000000000\n0.1\n1e+300\n-0.5\n\"\"\n");
  EXPECT_THAT(folder.Files(), ElementsAre("t.csv"));
}

TEST(Tables, ANameThatIsAByteOrderMarkSurvivesWriting) {
  const ScratchFolder folder;
  MemoryTable table;
  table.AddNumbers("\xEF\xBB\xBF", {1});
  WriteDataFile(table, folder.Path("t.csv"));
  const auto again = OpenDataFile(folder.Path("t.csv"), {}, TableStorage::kMemory);
  EXPECT_EQ(Contents(*again), Contents(table));
}

TEST(Tables, ScansGiveTheColumnsAskedForInThatOrderAndDoNotDisturbEachOther) {
  const ScratchFolder folder;
  MemoryTable memory = Mixed(9000);
  WriteDataFile(memory, folder.Path("t.parquet"));
  const auto streamed = OpenDataFile(folder.Path("t.parquet"), {}, TableStorage::kStreamed);
  for (ITable* table : {static_cast<ITable*>(&memory), static_cast<ITable*>(streamed.get())}) {
    const auto first = table->Scan({2, 0, 2});
    const auto second = table->Scan({0});
    const TableBatch* a = first->Next();
    second->Next();
    const TableBatch* b = second->Next();
    ASSERT_TRUE(a != nullptr && b != nullptr);
    EXPECT_EQ(a->fNCases, 4096u);
    EXPECT_EQ(b->fFirstCase, 4096);
    EXPECT_EQ(a->fColumns[0].fpCodes[5], a->fColumns[2].fpCodes[5]);
    EXPECT_EQ(a->fColumns[1].fpNumbers[0], KOVA_SystemMissing);
    EXPECT_EQ(table->Scan({})->Next()->fNCases, 4096u);
  }
}

TEST(Tables, NewVariablesAreMissingUntilTheyAreWritten) {
  const ScratchFolder folder;
  MemoryTable memory = Mixed(5000);
  WriteDataFile(memory, folder.Path("t.csv"));
  const auto streamed = OpenDataFile(folder.Path("t.csv"), {}, TableStorage::kStreamed);
  for (DataTable* table : {static_cast<DataTable*>(&memory), streamed.get()}) {
    KOVA_DataSource source(*table);
    const KOVA_Variable* first = &table->GetVariable(0);
    const int number = source.MakeVariable("p", 0);
    const int text = source.MakeVariable("Q", 8);
    EXPECT_EQ(&table->GetVariable(0), first);
    const auto scan = table->Scan({number, 0});
    EXPECT_EQ(scan->Next()->fColumns[0].fpNumbers[4], KOVA_SystemMissing);
    const double values[] = {1.5, 2.5};
    table->WriteNumbers(number, 4095, values, 2);
    const std::string word = "yes";
    const std::string* const words[] = {&word, nullptr, &word};
    table->WriteStrings(text, 4998, words, 2);
    table->WriteStrings(text, 0, words + 2, 1);
    EXPECT_EQ(scan->Next()->fColumns[0].fpNumbers[0], 2.5);
    EXPECT_EQ(Cells(*table, number)[4095], "1.5");
    EXPECT_EQ(Cells(*table, text)[4998], "0:yes");
    EXPECT_EQ(Cells(*table, text)[4999], ".");
    EXPECT_EQ(source.FindVariable("q"), text);
  }
  EXPECT_EQ(Contents(memory), Contents(*streamed));
  WriteDataFile(*streamed, folder.Path("t.csv"));  // over the file that it is read from
  EXPECT_EQ(Cells(*OpenDataFile(folder.Path("t.csv"), {}, TableStorage::kMemory), 3)[4096], "2.5");
}

TEST(Tables, NamesAreFoundAsTheyAreOrByTheOnlyOtherCase) {
  MemoryTable table;
  for (const char* name : {"a", "B", "É", "c", "C"}) table.AddNumbers(name, {1});
  const KOVA_DataSource source(table);
  EXPECT_EQ(source.FindVariable("A"), 0);
  EXPECT_EQ(source.FindVariable("é"), 2);
  EXPECT_EQ(source.FindVariable("C"), 4);
  EXPECT_EQ(source.FindVariable("d"), -1);
  MemoryTable twins;
  for (const char* name : {"ab", "AB"}) twins.AddNumbers(name, {1});
  EXPECT_EQ(KOVA_DataSource(twins).FindVariable("aB"), -1);
}

TEST(OutputFile, LeavesTheTargetAloneUntilItIsCommitted) {
  const ScratchFolder folder;
  const std::string target = folder.Write("out.txt", "old");
  {
    OutputFile file(target);
    file.Write("half");
    EXPECT_EQ(ReadFile(target), "old");
  }
  EXPECT_EQ(ReadFile(target), "old");
  OutputFile file(target);
  file.Write("new");
  file.Commit();
  EXPECT_EQ(ReadFile(target), "new");
  OutputFile abandoned(folder.Path("other"));
  RemoveUnfinished();
  EXPECT_THAT(folder.Files(), ElementsAre("out.txt"));
}

TEST(NewFolder, StaysOnlyWithWhatWasWrittenIntoIt) {
  const ScratchFolder folder;
  const std::string deep = folder.Path("a") + "/b/";
  { const NewFolder made(deep); }
  EXPECT_THAT(folder.Files(), ElementsAre());
  const NewFolder ended(deep);
  RemoveUnfinished();
  EXPECT_THAT(folder.Files(), ElementsAre());
  {
    const NewFolder kept(deep);
    std::ofstream(deep + "file") << "whole";
  }
  { const NewFolder there(deep); }
  EXPECT_TRUE(std::filesystem::exists(deep + "file"));
  EXPECT_THROW(NewFolder(deep + "file/c"), HostIOError);
}

TEST(OutputFile, WhatADeadWriterLeftIsRemovedAndNothingElse) {
  const ScratchFolder folder;
  folder.Write(".predselect-1-0.tmp", "left");
  const std::string alive = folder.Write(".predselect-1-1.tmp", "written by another");
  folder.Write("notes.tmp", "the user's");
  folder.Write(".predselect-rc", "the user's");
  const int writer = open(alive.c_str(), O_WRONLY);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  OutputFile(folder.Path("out.txt")).Commit();
  EXPECT_THAT(folder.Files(), UnorderedElementsAre(".predselect-1-1.tmp", ".predselect-rc",
                                                   "notes.tmp", "out.txt"));
  close(writer);
  OutputFile::Check(folder.Path("other.txt"));
  EXPECT_THAT(folder.Files(), UnorderedElementsAre(".predselect-rc", "notes.tmp", "out.txt"));
}

void Put(const std::string& path, const std::string& text) {
  OutputFile file(path);
  file.Write(text);
  file.Commit();
}

TEST(OutputGroup, AllFilesTakeTheirPlacesOrNone) {
  const ScratchFolder folder;
  const std::string old = folder.Write("old", "1");
  const std::string made = folder.Path("made");
  const std::string last = folder.Path("last");
  const auto put = [&](const std::string& text) {
    for (const std::string& path : {old, made, last}) Put(path, text);
  };
  {
    OutputGroup group;
    put("2");
    std::filesystem::create_directories(last + "/full");  // no file can take its place any more
    EXPECT_THROW(group.Commit(), HostIOError);
    std::filesystem::remove_all(last);
  }
  {
    OutputGroup outer;
    put("2");
    OutputGroup().Fail();
    EXPECT_FALSE(outer.Commit());
    EXPECT_FALSE(outer.Commit());
  }
  {
    OutputGroup group;
    put("2");
    EXPECT_FALSE(group.Commit([] { return true; }));
  }
  EXPECT_EQ(ReadFile(old), "1");
  EXPECT_THAT(folder.Files(), ElementsAre("old"));
  {
    OutputGroup outer;
    {
      OutputGroup inner;
      put("2");
      Put(old, "3");
      inner.MakeFolder(folder.Path("empty"));
      EXPECT_TRUE(inner.Commit());
    }
    EXPECT_EQ(ReadFile(old), "1");
    EXPECT_TRUE(outer.Commit());
  }
  EXPECT_EQ(ReadFile(old) + ReadFile(made) + ReadFile(last), "322");
  EXPECT_THAT(folder.Files(), UnorderedElementsAre("last", "made", "old"));
}

TEST(OutputFile, AFileThatMayOnlyBeReadIsReplacedByOneLikeIt) {
  const ScratchFolder folder;
  MemoryTable table = Mixed(3);
  for (const char* name : kFormats) {
    const std::string path = folder.Write(name, "old");
    ASSERT_EQ(chmod(path.c_str(), 0440), 0);
    WriteDataFile(table, path);
    struct stat replaced;
    ASSERT_EQ(stat(path.c_str(), &replaced), 0);
    EXPECT_EQ(replaced.st_mode & 07777, 0440u) << name;
    EXPECT_NE(ReadFile(path), "old") << name;
  }
}

TEST(OutputFile, FailuresAreReportedAndLeaveNothingBehind) {
  const ScratchFolder folder;
  MemoryTable table = Mixed(3);
  for (const char* name : kFormats) {
    EXPECT_THROW(WriteDataFile(table, folder.Path(std::string("missing/") + name)), HostIOError);
  }
  OutputFile full("/dev/full");
  EXPECT_THROW(full.Write("x"), HostIOError);
  EXPECT_THROW(OutputFile(folder.Path("")), HostIOError);
  // A reader that fails half way through the writing of its own copy.
  const std::string path = folder.Write("t.csv", "a,b\n1,2\n3,4\n");
  const auto streamed = OpenDataFile(path, {}, TableStorage::kStreamed);
  folder.Write("t.csv", "a,b\n1,2\n");
  EXPECT_THROW(WriteDataFile(*streamed, path), HostIOError);
  EXPECT_EQ(ReadFile(path), "a,b\n1,2\n");
  EXPECT_THAT(folder.Files(), ElementsAre("t.csv"));
}

}  // namespace
}  // namespace MCHost
