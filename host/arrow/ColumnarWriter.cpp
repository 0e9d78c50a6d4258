#include "host/arrow/ColumnarWriter.h"

#include <arrow/array.h>
#include <arrow/io/file.h>
#include <arrow/io/stdio.h>
#include <arrow/ipc/options.h>
#include <arrow/ipc/writer.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <parquet/arrow/writer.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <vector>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/FirmPool.h"
#include "host/arrow/SavedBatches.h"
#include "host/arrow/SavedDictionary.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

// Cells of a row group: what the writer and a reader must hold at a time.
constexpr std::int64_t kGroupCells = std::int64_t{1} << 22;
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

bool IsPipe(const std::string& path) { return path == OutputFile::kStandardOutput; }

std::shared_ptr<arrow::io::OutputStream> OpenOutput(const OutputFile& file,
                                                    const std::string& path) {
  if (IsPipe(path)) return std::make_shared<arrow::io::StdoutStream>();
  return Value(arrow::io::FileOutputStream::Open(file.WritePath()), path);
}

void Finish(arrow::io::OutputStream& output, OutputFile& file, const std::string& path) {
  Check(output.Close(), path);
  if (IsPipe(path) && !std::cout.flush()) {
    throw HostIOError("standard output", "", "cannot be written");
  }
  file.Commit();
}

}  // namespace

void WriteParquet(SavedBatches& batches, const std::string& path) {
  FirmPool pool;
  OutputFile file(path);
  const auto output = OpenOutput(file, path);
  const std::int64_t columns = std::max(batches.Schema()->num_fields(), 1);
  const auto properties =
      parquet::WriterProperties::Builder()
          .memory_pool(&pool)
          ->compression(parquet::Compression::SNAPPY)
          ->dictionary_pagesize_limit(kDictionaryBytes)
          ->max_row_group_length(std::max<std::int64_t>(kGroupCells / columns, 1))
          ->build();
  const auto arrowProperties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
  const auto writer = Value(parquet::arrow::FileWriter::Open(*batches.Schema(), &pool, output,
                                                             properties, arrowProperties),
                            path);
  const auto change = [](std::size_t, const auto& column) { return WithoutNullEntries(column); };
  WriteBatches(batches, path, change,
               [&](const arrow::RecordBatch& batch) { return writer->WriteRecordBatch(batch); });
  Check(writer->Close(), path);
  Finish(*output, file, path);
}

void WriteIpc(SavedBatches& batches, const std::string& path) {
  OutputFile file(path);
  const auto output = OpenOutput(file, path);
  auto options = arrow::ipc::IpcWriteOptions::Defaults();
  options.emit_dictionary_deltas = true;
  // A pipe is read from its start.
  const auto writer = Value(path == OutputFile::kStandardOutput
                                ? arrow::ipc::MakeStreamWriter(output, batches.Schema(), options)
                                : arrow::ipc::MakeFileWriter(output, batches.Schema(), options),
                            path);
  std::vector<SavedDictionary> dictionaries(
      static_cast<std::size_t>(batches.Schema()->num_fields()));
  const auto change = [&](std::size_t j, const auto& column) {
    return dictionaries[j].Take(column);
  };
  WriteBatches(batches, path, change,
               [&](const arrow::RecordBatch& batch) { return writer->WriteRecordBatch(batch); });
  Check(writer->Close(), path);
  Finish(*output, file, path);
}

}  // namespace MCHost
