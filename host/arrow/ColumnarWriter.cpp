#include "host/arrow/ColumnarWriter.h"

#include <arrow/array.h>
#include <arrow/io/file.h>
#include <arrow/ipc/options.h>
#include <arrow/ipc/writer.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <parquet/arrow/writer.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/SavedDictionary.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

// Cells of a row group: what a reader must hold at a time.
constexpr std::int64_t kGroupCells = std::int64_t{1} << 24;
// A column of more distinct values than this holds is written as it is: looking each value up among
// many costs more than the room that it saves.
constexpr std::int64_t kDictionaryBytes = std::int64_t{1} << 16;

// Hands the batches over one by one, each column first to `change`.
template <class Change, class Write>
void WriteBatches(SavedBatches& batches, const std::string& path, Change change, Write write) {
  while (const auto batch = batches.Next()) {
    arrow::ArrayVector columns = batch->columns();
    for (std::size_t j = 0; j < columns.size(); ++j) {
      if (columns[j]->type_id() == arrow::Type::DICTIONARY) {
        columns[j] = Value(change(j, columns[j]), path);
      }
    }
    Check(write(*arrow::RecordBatch::Make(batch->schema(), batch->num_rows(), columns)), path);
  }
}

}  // namespace

void WriteParquet(SavedBatches& batches, const std::string& path) {
  OutputFile file(path);
  const auto output = Value(arrow::io::FileOutputStream::Open(file.WritePath()), path);
  const std::int64_t columns = std::max(batches.Schema()->num_fields(), 1);
  const auto properties =
      parquet::WriterProperties::Builder()
          .compression(parquet::Compression::SNAPPY)
          ->dictionary_pagesize_limit(kDictionaryBytes)
          ->max_row_group_length(std::max<std::int64_t>(kGroupCells / columns, 1))
          ->build();
  const auto arrowProperties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
  const auto writer =
      Value(parquet::arrow::FileWriter::Open(*batches.Schema(), arrow::default_memory_pool(),
                                             output, properties, arrowProperties),
            path);
  const auto change = [](std::size_t, const auto& column) { return WithoutNullEntries(column); };
  WriteBatches(batches, path, change,
               [&](const arrow::RecordBatch& batch) { return writer->WriteRecordBatch(batch); });
  Check(writer->Close(), path);
  Check(output->Close(), path);
  file.Commit();
}

void WriteIpc(SavedBatches& batches, const std::string& path) {
  OutputFile file(path);
  const auto output = Value(arrow::io::FileOutputStream::Open(file.WritePath()), path);
  auto options = arrow::ipc::IpcWriteOptions::Defaults();
  options.emit_dictionary_deltas = true;
  const auto writer = Value(arrow::ipc::MakeFileWriter(output, batches.Schema(), options), path);
  std::vector<SavedDictionary> dictionaries(
      static_cast<std::size_t>(batches.Schema()->num_fields()));
  const auto change = [&](std::size_t j, const auto& column) {
    return dictionaries[j].Take(column);
  };
  WriteBatches(batches, path, change,
               [&](const arrow::RecordBatch& batch) { return writer->WriteRecordBatch(batch); });
  Check(writer->Close(), path);
  Check(output->Close(), path);
  file.Commit();
}

}  // namespace MCHost
