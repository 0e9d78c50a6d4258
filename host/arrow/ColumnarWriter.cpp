#include "host/arrow/ColumnarWriter.h"

#include <arrow/array.h>
#include <arrow/io/file.h>
#include <arrow/io/stdio.h>
#include <arrow/ipc/options.h>
#include <arrow/ipc/writer.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>
#include <parquet/arrow/writer.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/FirmPool.h"
#include "host/arrow/JoinedTypes.h"
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

using Type = std::shared_ptr<arrow::DataType>;
using Schema = std::shared_ptr<arrow::Schema>;

Schema WithTypes(const Schema& schema, Type (*typeFor)(const Type&)) {
  arrow::FieldVector fields = schema->fields();
  for (auto& field : fields) field = field->WithType(typeFor(field->type()));
  return arrow::schema(std::move(fields), schema->metadata());
}

// Hands the batches over one by one in the types of a schema, each dictionary column first to
// `change`. False where that gives none.
template <class Change, class Write>
bool WriteBatches(SavedBatches& batches, const Schema& schema, const std::string& path,
                  Change change, Write write) {
  while (const auto batch = batches.Next()) {
    arrow::ArrayVector columns = batch->columns();
    for (std::size_t j = 0; j < columns.size(); ++j) {
      columns[j] = Value(CellsAs(columns[j], schema->field(static_cast<int>(j))->type()), path);
      if (columns[j]->type_id() != arrow::Type::DICTIONARY) continue;
      columns[j] = Value(change(j, columns[j]), path);
      if (columns[j] == nullptr) return false;
    }
    Check(write(*arrow::RecordBatch::Make(schema, batch->num_rows(), columns)), path);
  }
  return true;
}

// Parquet has places behind the point alone.
Type TypeInParquet(const Type& type) {
  const Type value = ValueTypeOf(type);
  if (!arrow::is_decimal(value->id())) return type;
  const auto& decimal = static_cast<const arrow::DecimalType&>(*value);
  if (decimal.scale() >= 0) return type;
  const int digits = decimal.precision() - decimal.scale();
  if (digits > arrow::Decimal256Type::kMaxPrecision) return arrow::float64();
  return digits > arrow::Decimal128Type::kMaxPrecision ? arrow::decimal256(digits, 0)
                                                       : arrow::decimal128(digits, 0);
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
  const Schema schema = WithTypes(batches.Schema(), TypeInParquet);
  const std::int64_t columns = std::max(schema->num_fields(), 1);
  const auto properties =
      parquet::WriterProperties::Builder()
          .memory_pool(&pool)
          ->compression(parquet::Compression::SNAPPY)
          ->dictionary_pagesize_limit(kDictionaryBytes)
          ->max_row_group_length(std::max<std::int64_t>(kGroupCells / columns, 1))
          ->build();
  const auto arrowProperties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
  const auto writer = Value(
      parquet::arrow::FileWriter::Open(*schema, &pool, output, properties, arrowProperties), path);
  const auto change = [](std::size_t, const auto& column) { return WithoutNullEntries(column); };
  WriteBatches(batches, schema, path, change,
               [&](const arrow::RecordBatch& batch) { return writer->WriteRecordBatch(batch); });
  Check(writer->Close(), path);
  Finish(*output, file, path);
}

bool WriteIpc(SavedBatches& batches, const std::string& path, Dictionaries dictionaries) {
  OutputFile file(path);
  const auto output = OpenOutput(file, path);
  auto options = arrow::ipc::IpcWriteOptions::Defaults();
  options.emit_dictionary_deltas = true;
  const Schema schema = dictionaries == Dictionaries::kKept
                            ? batches.Schema()
                            : WithTypes(batches.Schema(), ValueTypeOf);
  // A pipe is read from its start, where a dictionary may take the place of another one.
  const bool isStream = IsPipe(path);
  const auto writer = Value(isStream ? arrow::ipc::MakeStreamWriter(output, schema, options)
                                     : arrow::ipc::MakeFileWriter(output, schema, options),
                            path);
  std::vector<SavedDictionary> saved(static_cast<std::size_t>(schema->num_fields()));
  const auto change = [&](std::size_t j, const std::shared_ptr<arrow::Array>& column) {
    return isStream ? arrow::Result<std::shared_ptr<arrow::Array>>(column) : saved[j].Take(column);
  };
  const bool isWhole = WriteBatches(
      batches, schema, path, change,
      [&](const arrow::RecordBatch& batch) { return writer->WriteRecordBatch(batch); });
  if (!isWhole) return false;
  Check(writer->Close(), path);
  Finish(*output, file, path);
  return true;
}

}  // namespace MCHost
