// What leaves the host as an Arrow stream: the same table for another reader, owned to the last
// buffer by whoever took it.
#include "host/data/ArrowStreamWriter.h"

#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/util/key_value_metadata.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "host/data/ArrowCDataInterface.h"
#include "host/data/MemoryTable.h"
#include "host/data/TableBatches.h"
#include "host/session/HostIOError.h"
#include "tests/host/data/TableFixtures.h"

namespace MCHost {
namespace {

// Several chunks of cells, every seventh number and every fifth text missing.
std::shared_ptr<MemoryTable> SampleTable() {
  std::vector<double> numbers;
  std::vector<std::optional<std::string>> texts;
  for (int i = 0; i < 10001; ++i) {
    numbers.push_back(i % 7 == 0 ? std::numeric_limits<double>::quiet_NaN() : i / 3.0);
    texts.push_back(i % 5 == 0 ? std::nullopt : std::optional("é" + std::to_string(i % 13)));
  }
  auto table = std::make_shared<MemoryTable>();
  table->AddNumbers("n", numbers);
  table->AddStrings("t", texts);
  table->AddNumbers("whole", std::vector<double>(numbers.size(), 1.5));
  table->GetVariable(1).SetLabel("A text");
  return table;
}

ArrowArrayStream StreamOf(const std::shared_ptr<MemoryTable>& table) {
  ArrowArrayStream stream{};
  std::vector<int> columns(static_cast<std::size_t>(table->ColumnCount()));
  std::iota(columns.begin(), columns.end(), 0);
  WriteArrowStream(std::make_unique<TableBatches>(table, columns), &stream);
  return stream;
}

TEST(ArrowStreamWriter, GivesOtherReadersTheTableAndItsLabels) {
  const auto table = SampleTable();
  ArrowArrayStream stream = StreamOf(table);
  const auto reader = arrow::ImportRecordBatchReader(&stream).ValueOrDie();
  const auto whole = reader->ToTable().ValueOrDie();
  ASSERT_TRUE(whole->ValidateFull().ok());
  EXPECT_GT(whole->column(0)->num_chunks(), 1);
  EXPECT_EQ(whole->schema()->ToString(false), "n: double\nt: string\nwhole: double");
  EXPECT_EQ(whole->schema()->field(1)->metadata()->Get("label").ValueOrDie(), "A text");
  EXPECT_EQ(whole->column(0)->null_count(), 1429);
  EXPECT_EQ(whole->column(1)->null_count(), 2001);
  EXPECT_EQ(whole->column(2)->null_count(), 0);

  stream = StreamOf(table);
  MemoryTable again(&stream);
  EXPECT_EQ(Contents(again), Contents(*table));
  EXPECT_EQ(again.GetVariable(1).GetLabel(), "A text");
}

TEST(ArrowStreamWriter, WhatWasTakenOutlivesTheRestInAnyOrderOfRelease) {
  auto table = SampleTable();
  ArrowArrayStream stream = StreamOf(table);
  table.reset();
  ArrowSchema schema{};
  ArrowSchema same{};
  ArrowArray batch{};
  ASSERT_EQ(stream.get_schema(&stream, &schema), 0);
  ASSERT_EQ(stream.get_schema(&stream, &same), 0);
  ASSERT_EQ(stream.get_next(&stream, &batch), 0);
  stream.release(&stream);
  EXPECT_EQ(stream.release, nullptr);

  // Columns that move out of their parents stay when these go.
  ArrowSchema field = *schema.children[1];
  schema.children[1]->release = nullptr;
  ArrowArray texts = *batch.children[1];
  batch.children[1]->release = nullptr;
  schema.release(&schema);
  batch.release(&batch);
  EXPECT_EQ(schema.release, nullptr);
  EXPECT_EQ(batch.release, nullptr);
  EXPECT_STREQ(field.name, "t");
  const auto* offsets = static_cast<const std::int32_t*>(texts.buffers[1]);
  const auto* bytes = static_cast<const char*>(texts.buffers[2]);
  EXPECT_EQ(std::string(bytes + offsets[1], bytes + offsets[2]), "é1");
  EXPECT_EQ(static_cast<const std::uint8_t*>(texts.buffers[0])[0], 0b11011110);
  texts.release(&texts);
  field.release(&field);

  // A child that its parent still has may be released first, too.
  same.children[0]->release(same.children[0]);
  same.release(&same);
}

// Gives one batch and breaks.
class BreakingBatches : public IArrowBatches {
 public:
  const std::vector<ArrowField>& Fields() const override { return fFields; }
  std::size_t Next(std::vector<ArrowCells>& columns) override {
    if (fbGiven) throw HostIOError("cells", "case 2", "the disk is gone");
    fbGiven = true;
    columns[0].AddMissing();
    return 1;
  }

 private:
  std::vector<ArrowField> fFields{{"v", false, {}}};
  bool fbGiven = false;
};

TEST(ArrowStreamWriter, AProducersFailureIsTheStreamsErrorUntilTheNextCall) {
  ArrowArrayStream stream{};
  WriteArrowStream(std::make_unique<BreakingBatches>(), &stream);
  ArrowArray batch{};
  ASSERT_EQ(stream.get_next(&stream, &batch), 0);
  EXPECT_EQ(batch.children[0]->null_count, 1);
  batch.release(&batch);
  EXPECT_EQ(stream.get_next(&stream, &batch), EIO);
  EXPECT_EQ(batch.release, nullptr);
  EXPECT_STREQ(stream.get_last_error(&stream), "cells, case 2: the disk is gone");
  ArrowSchema schema{};
  EXPECT_EQ(stream.get_schema(&stream, &schema), 0);
  EXPECT_EQ(stream.get_last_error(&stream), nullptr);
  schema.release(&schema);
  stream.release(&stream);
}

}  // namespace
}  // namespace MCHost
