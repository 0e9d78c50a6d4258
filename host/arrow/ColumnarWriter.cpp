#include "host/arrow/ColumnarWriter.h"

#include <arrow/array/builder_binary.h>
#include <arrow/array/builder_primitive.h>
#include <arrow/io/file.h>
#include <arrow/ipc/writer.h>
#include <arrow/record_batch.h>
#include <arrow/table_builder.h>
#include <arrow/type.h>
#include <arrow/util/key_value_metadata.h>
#include <parquet/arrow/writer.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

#include "common/MissingValue.h"
#include "host/arrow/ArrowFailure.h"
#include "host/data/ITable.h"
#include "host/session/OutputFile.h"

namespace MCHost {

namespace {

// Cells of one written batch, and of a row group: what a reader must hold at a time.
constexpr std::int64_t kBatchCells = std::int64_t{1} << 20;
constexpr std::int64_t kGroupCells = std::int64_t{1} << 24;
// A column of more distinct values than this holds is written as it is: looking each value up among
// many costs more than the room that it saves.
constexpr std::int64_t kDictionaryBytes = std::int64_t{1} << 16;

using BatchWriter = std::function<arrow::Status(const arrow::RecordBatch&)>;

std::shared_ptr<arrow::Schema> SchemaOf(const ITable& table) {
  arrow::FieldVector fields;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const KOVA_Variable& variable = table.GetVariable(i);
    auto type = variable.IsNumeric() ? arrow::float64() : arrow::utf8();
    auto field = arrow::field(variable.GetName(), std::move(type));
    if (!variable.GetLabel().empty()) {
      field = field->WithMetadata(arrow::key_value_metadata({"label"}, {variable.GetLabel()}));
    }
    fields.push_back(std::move(field));
  }
  return arrow::schema(std::move(fields));
}

void AppendCells(arrow::ArrayBuilder& builder, const ColumnView& column, std::size_t n,
                 const std::string& path) {
  if (column.fpNumbers != nullptr) {
    auto& numbers = static_cast<arrow::DoubleBuilder&>(builder);
    std::vector<std::uint8_t> valid(n);
    for (std::size_t i = 0; i < n; ++i) valid[i] = !MCMV::IsMissing(column.fpNumbers[i]);
    const auto count = static_cast<std::int64_t>(n);
    return Check(numbers.AppendValues(column.fpNumbers, count, valid.data()), path);
  }
  auto& strings = static_cast<arrow::StringBuilder&>(builder);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int32_t code = column.fpCodes[i];
    Check(code < 0 ? strings.AppendNull() : strings.Append(column.fpDictionary->At(code)), path);
  }
}

// Scans the table and hands it over in batches of about kBatchCells cells.
class BatchMaker {
 public:
  BatchMaker(ITable& table, std::shared_ptr<arrow::Schema> schema, std::string path)
      : fpTable(&table), fpSchema(std::move(schema)), fPath(std::move(path)) {
    const std::int64_t columns = std::max(table.ColumnCount(), 1);
    fBatchCases = std::max<std::int64_t>(kBatchCells / columns, 1);
    fBuilder =
        Value(arrow::RecordBatchBuilder::Make(fpSchema, arrow::default_memory_pool()), fPath);
  }

  void Run(const BatchWriter& write) {
    std::vector<int> columns(static_cast<std::size_t>(fpTable->ColumnCount()));
    std::iota(columns.begin(), columns.end(), 0);
    const auto scan = fpTable->Scan(columns);
    while (const TableBatch* batch = scan->Next()) {
      for (std::size_t j = 0; j < columns.size(); ++j) {
        AppendCells(*fBuilder->GetField(static_cast<int>(j)), batch->fColumns[j], batch->fNCases,
                    fPath);
      }
      fNPending += static_cast<std::int64_t>(batch->fNCases);
      if (fNPending >= fBatchCases) Flush(write);
    }
    if (fNPending > 0) Flush(write);
  }

 private:
  void Flush(const BatchWriter& write) {
    Check(write(*Value(fBuilder->Flush(), fPath)), fPath);
    fNPending = 0;
  }

  ITable* fpTable;
  std::shared_ptr<arrow::Schema> fpSchema;
  std::string fPath;
  std::int64_t fBatchCases;
  std::int64_t fNPending = 0;
  std::unique_ptr<arrow::RecordBatchBuilder> fBuilder;
};

}  // namespace

void WriteParquet(ITable& table, const std::string& path) {
  OutputFile file(path);
  const auto schema = SchemaOf(table);
  const auto output = Value(arrow::io::FileOutputStream::Open(file.WritePath()), path);
  const std::int64_t columns = std::max(table.ColumnCount(), 1);
  const auto properties =
      parquet::WriterProperties::Builder()
          .compression(parquet::Compression::SNAPPY)
          ->dictionary_pagesize_limit(kDictionaryBytes)
          ->max_row_group_length(std::max<std::int64_t>(kGroupCells / columns, 1))
          ->build();
  const auto arrowProperties = parquet::ArrowWriterProperties::Builder().store_schema()->build();
  const auto writer = Value(parquet::arrow::FileWriter::Open(*schema, arrow::default_memory_pool(),
                                                             output, properties, arrowProperties),
                            path);
  BatchMaker(table, schema, path).Run([&](const arrow::RecordBatch& batch) {
    return writer->WriteRecordBatch(batch);
  });
  Check(writer->Close(), path);
  Check(output->Close(), path);
  file.Commit();
}

void WriteIpc(ITable& table, const std::string& path) {
  OutputFile file(path);
  const auto schema = SchemaOf(table);
  const auto output = Value(arrow::io::FileOutputStream::Open(file.WritePath()), path);
  const auto writer = Value(arrow::ipc::MakeFileWriter(output, schema), path);
  BatchMaker(table, schema, path).Run([&](const arrow::RecordBatch& batch) {
    return writer->WriteRecordBatch(batch);
  });
  Check(writer->Close(), path);
  Check(output->Close(), path);
  file.Commit();
}

}  // namespace MCHost
