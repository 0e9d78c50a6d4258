// Files as other programs write them: forms, encodings and contents that our own writers do not
// use.
#include <arrow/api.h>
#include <arrow/io/file.h>
#include <arrow/ipc/writer.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/arrow/SpooledInput.h"
#include "host/data/MeasurementLevels.h"
#include "host/data/TableSchema.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

using testing::ElementsAre;

std::shared_ptr<arrow::io::OutputStream> Output(const std::string& path) {
  return arrow::io::FileOutputStream::Open(path).ValueOrDie();
}

// A column of words, a column of dictionary codes and a number, in batches with dictionaries of
// their own: "a", "b" in the first, "b", "c" in the second.
arrow::RecordBatchVector TwoBatches() {
  const auto strings = [](const std::vector<std::string>& texts) {
    arrow::StringBuilder builder;
    EXPECT_TRUE(builder.AppendValues(texts).ok());
    return builder.Finish().ValueOrDie();
  };
  const auto numbers = [](auto builder, const std::vector<int>& values) {
    for (const int value : values) EXPECT_TRUE(builder.Append(value).ok());
    return builder.Finish().ValueOrDie();
  };
  const auto type = arrow::dictionary(arrow::int8(), arrow::utf8());
  const auto schema =
      arrow::schema({arrow::field("word", arrow::utf8(),
                                  arrow::key_value_metadata({"x", "label"}, {"y", "A word"})),
                     arrow::field("code", type), arrow::field("n", arrow::int32())});
  arrow::RecordBatchVector batches;
  const std::vector<std::string> dictionaries[] = {{"a", "b"}, {"b", "c"}};
  for (const auto& dictionary : dictionaries) {
    const auto codes = arrow::DictionaryArray::FromArrays(
                           type, numbers(arrow::Int8Builder(), {1, 0, 1}), strings(dictionary))
                           .ValueOrDie();
    batches.push_back(arrow::RecordBatch::Make(
        schema, 3, {strings({"x", "y", "x"}), codes, numbers(arrow::Int32Builder(), {1, 2, 3})}));
  }
  return batches;
}

void Write(const std::string& path, const arrow::RecordBatchVector& batches) {
  const auto output = Output(path);
  if (path.ends_with(".parquet")) {
    const auto table = arrow::Table::FromRecordBatches(batches).ValueOrDie();
    ASSERT_TRUE(parquet::arrow::WriteTable(*table, arrow::default_memory_pool(), output, 2).ok());
  } else {
    // The stream form, in which a dictionary may be replaced from batch to batch.
    const auto writer = arrow::ipc::MakeStreamWriter(output, batches[0]->schema()).ValueOrDie();
    for (const auto& batch : batches) ASSERT_TRUE(writer->WriteRecordBatch(*batch).ok());
    ASSERT_TRUE(writer->Close().ok());
  }
  ASSERT_TRUE(output->Close().ok());
}

TEST(ForeignFiles, KeepOneNumberingOfStringsAcrossBatchesAndRowGroups) {
  const ScratchFolder folder;
  for (const char* name : {"t.arrow", "t.parquet"}) {
    Write(folder.Path(name), TwoBatches());
    for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
      SCOPED_TRACE(name);
      const auto table = OpenDataFile(folder.Path(name), {}, storage);
      EXPECT_EQ(table->CaseCount(), 6);
      EXPECT_THAT(Cells(*table, 1), ElementsAre("0:b", "1:a", "0:b", "2:c", "0:b", "2:c"));
      EXPECT_THAT(Cells(*table, 2), ElementsAre("1", "2", "3", "1", "2", "3"));
      for (const char* copy : {"u.feather", "u.parquet", "u.csv"}) {
        WriteDataFile(*table, folder.Path(copy));
        EXPECT_EQ(Contents(*OpenDataFile(folder.Path(copy), {}, storage)), Contents(*table));
      }
    }
  }
}

TEST(ForeignFiles, LabelsGoOutAndComeBack) {
  const ScratchFolder folder;
  Write(folder.Path("t.arrow"), TwoBatches());
  const auto table = OpenDataFile(folder.Path("t.arrow"), {}, TableStorage::kStreamed);
  EXPECT_EQ(table->GetVariable(0).GetLabel(), "A word");
  for (const char* name : {"again.parquet", "again.feather"}) {
    WriteDataFile(*table, folder.Path(name));
    const auto again = OpenDataFile(folder.Path(name), {}, TableStorage::kMemory);
    EXPECT_EQ(again->GetVariable(0).GetLabel(), "A word") << name;
    EXPECT_EQ(again->GetVariable(1).GetLabel(), "") << name;
  }
}

TEST(ForeignFiles, NestedColumnsAndDamageAreRefused) {
  const ScratchFolder folder;
  const auto nested = arrow::list(arrow::int32());
  const auto batch = arrow::RecordBatch::Make(arrow::schema({arrow::field("deep", nested)}), 1,
                                              {arrow::MakeArrayOfNull(nested, 1).ValueOrDie()});
  for (const char* name : {"t.parquet", "t.arrow"}) {
    const std::string path = folder.Path(name);
    const auto open = [&path] { OpenDataFile(path, {}, TableStorage::kMemory); };
    Write(path, {batch});
    EXPECT_THROW(open(), HostIOError) << name;
    Write(path, TwoBatches());
    const std::string whole = ReadFile(path);
    for (const std::size_t size : {std::size_t{0}, std::size_t{5}, whole.size() / 2}) {
      folder.Write(name, whole.substr(0, size));
      EXPECT_THROW(open(), HostIOError) << name << " cut to " << size;
    }
  }
}

// Files of which two numbers were changed alike: nothing in Arrow's form contradicts them but the
// size of what follows.
TEST(ForeignFiles, CellsThatAreNotThereAreRefused) {
  const ScratchFolder folder;
  const auto bytesOf = [](std::int64_t number) {
    return std::string(reinterpret_cast<const char*>(&number), sizeof(number));
  };
  arrow::Int64Builder builder;
  ASSERT_TRUE(builder.AppendValues(std::vector<std::int64_t>{11, 12, 13, 14, 15}).ok());
  const auto batch = arrow::RecordBatch::Make(arrow::schema({arrow::field("n", arrow::int64())}), 5,
                                              {builder.Finish().ValueOrDie()});
  for (const bool isFile : {false, true}) {
    const std::string path = folder.Path("t.arrow");
    const auto output = Output(path);
    const auto make = isFile ? arrow::ipc::MakeFileWriter(output, batch->schema())
                             : arrow::ipc::MakeStreamWriter(output, batch->schema());
    const auto writer = make.ValueOrDie();
    ASSERT_TRUE(writer->WriteRecordBatch(*batch).ok() && writer->Close().ok());
    ASSERT_TRUE(output->Close().ok());
    std::string text = ReadFile(path);
    int changes = 0;
    for (std::size_t at = 0; (at = text.find(bytesOf(5), at)) != std::string::npos; ++changes) {
      text.replace(at, sizeof(std::int64_t), bytesOf(3000000));
    }
    ASSERT_EQ(changes, 2) << "of the batch and of its column";
    folder.Write("t.arrow", text);
    for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
      const auto describe = [&] { (void)Contents(*OpenDataFile(path, {}, storage)); };
      EXPECT_THROW(describe(), HostIOError) << isFile;
    }
  }
}

TEST(ForeignFiles, SchemaSettlesHowDelimitedTextIsRead) {
  const ScratchFolder folder;
  const TableSchema schema = TableSchema::Parse(
      R"({"missingValues": ["none", "-1"], "fields": [
          {"name": "zip", "type": "string"}, {"name": "paid", "type": "boolean"},
          {"name": "size", "categories": [{"value": 1, "label": "small"}]}]})",
      "s.json");
  const std::string path = folder.Write("t.csv", "zip,paid,size\n007,1,none\nnone,0,1\n-1,1,-1\n");
  for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
    const auto table = OpenDataFile(path, {schema.NullTokens(), schema.Types()}, storage);
    schema.Apply(*table);
    SettleMeasurementLevels(*table);
    EXPECT_THAT(Cells(*table, 0), ElementsAre("0:007", ".", "1:-1"));
    EXPECT_THAT(Cells(*table, 1), ElementsAre("1", "0", "1"));
    EXPECT_THAT(Cells(*table, 2), ElementsAre(".", "1", "-1"));
    EXPECT_TRUE(table->GetVariable(0).GetMissingValues().Contains(std::string("-1")));
    EXPECT_TRUE(table->GetVariable(2).GetMissingValues().Contains(-1.0));
  }
}

// A pipe can be read only once, a table more often.
TEST(ForeignFiles, StandardInputAndPipesAreReadInEveryFormatAndStorage) {
  const ScratchFolder folder;
  std::string large = "a,b\n";  // more than is held in memory
  while (large.size() < SpooledInput::kMostHeld) large += "1," + std::string(5000, 'x') + "\n";
  folder.Write("t.csv", "a,b\n1,x\n");
  folder.Write("large.csv", large);
  const auto table = OpenDataFile(folder.Path("t.csv"), {}, TableStorage::kMemory);
  for (const char* name : {"t.parquet", "t.arrow"}) WriteDataFile(*table, folder.Path(name));
  const std::string pipe = folder.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const char* name : {"t.csv", "large.csv", "t.parquet", "t.arrow"}) {
    for (const TableStorage storage : {TableStorage::kMemory, TableStorage::kStreamed}) {
      const std::string file = folder.Path(name);
      DataFileOptions options;
      options.fReading.fFormat = file.substr(file.rfind('.') + 1);
      ASSERT_NE(std::freopen(file.c_str(), "r", stdin), nullptr);
      const auto input = OpenDataFile("-", options, storage);
      std::thread writer([&] { std::ofstream(pipe, std::ios::binary) << ReadFile(file); });
      const auto piped = OpenDataFile(pipe, options, storage);
      writer.join();
      const auto contents = Contents(*OpenDataFile(file, {}, storage));
      EXPECT_EQ(Contents(*input), contents) << name;
      EXPECT_EQ(Contents(*piped), contents) << name;
    }
  }
}

TEST(ForeignFiles, ParquetAndArrowAreKnownByTheirContent) {
  const ScratchFolder folder;
  const auto table = OpenDataFile(folder.Write("t.csv", "a,b\n1,x\n"), {}, TableStorage::kMemory);
  for (const char* name : {"t.parquet", "t.arrow"}) {
    WriteDataFile(*table, folder.Path(name));
    const std::string renamed =
        folder.Write(std::string(name) + ".csv", ReadFile(folder.Path(name)));
    EXPECT_EQ(Contents(*OpenDataFile(renamed, {}, TableStorage::kMemory)), Contents(*table))
        << name;
  }
}

// What could match nothing is refused, and what was read as null is not.
TEST(ForeignFiles, ATextIsNoMissingCodeOfAColumnOfNumbers) {
  const ScratchFolder folder;
  DataFileOptions options;
  options.fReading.fMissing = {{"a", {"1", "none"}}, {"*", {"x"}}};
  const std::string text = folder.Write("t.csv", "a,b\n1,x\nnone,y\n");
  const auto table = OpenDataFile(text, options, TableStorage::kMemory);
  EXPECT_THAT(Cells(*table, 0), ElementsAre("1", "."));
  WriteDataFile(*table, folder.Path("t.parquet"));
  EXPECT_THROW(OpenDataFile(folder.Path("t.parquet"), options, TableStorage::kMemory), HostIOError);
  options.fReading.fMissing.erase(options.fReading.fMissing.begin());
  EXPECT_NO_THROW(OpenDataFile(folder.Path("t.parquet"), options, TableStorage::kMemory));
}

// Whether it is called as data or not, nothing is read of it to see what it holds.
TEST(ForeignFiles, APipeIsReadWhatEverItsName) {
  const ScratchFolder folder;
  for (const char* name : {"pipe.csv", "pipe"}) {
    const std::string pipe = folder.Path(name);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(pipe) << "a,b\n1,x\n"; });
    const auto table = OpenDataFile(pipe, {}, TableStorage::kMemory);
    writer.join();
    EXPECT_THAT(Cells(*table, 0), ElementsAre("1")) << name;
  }
}

TEST(ForeignFiles, WhatIsWrongWithStandardInputIsSaidOfIt) {
  const ScratchFolder folder;
  ASSERT_NE(std::freopen(folder.Write("t.csv", "a,b\n1\n").c_str(), "r", stdin), nullptr);
  for (const char* format : {"csv", "parquet", "arrow"}) {
    DataFileOptions options;
    options.fReading.fFormat = format;
    try {
      OpenDataFile("-", options, TableStorage::kMemory);
      ADD_FAILURE() << format;
    } catch (const HostIOError& error) {
      EXPECT_EQ(error.File(), "standard input") << format;
    }
  }
}

}  // namespace
}  // namespace MCHost
