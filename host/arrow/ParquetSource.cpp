#include "host/arrow/ParquetSource.h"

#include <arrow/c/bridge.h>
#include <arrow/io/file.h>
#include <arrow/memory_pool.h>
#include <arrow/record_batch.h>
#include <parquet/arrow/reader.h>
#include <parquet/exception.h>
#include <parquet/file_reader.h>
#include <parquet/metadata.h>
#include <parquet/properties.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// Cells of one batch: small enough that a wide file does not need much memory at a time.
constexpr std::int64_t kBatchCells = std::int64_t{1} << 20;
constexpr std::int64_t kMaxBatchCases = 16384;

// What reading may take, and what it takes for one column with pages and dictionary of usual size:
// fifty columns are read side by side, as putting cells by costs a third of the time.
constexpr std::int64_t kReadingBytes = std::int64_t{160} << 20;
constexpr std::int64_t kColumnBytes = std::int64_t{3} << 20;

// Whether a column holds texts that all stand in dictionaries, so that each text need be looked at
// only once.
bool IsDictionaryOfTexts(const parquet::FileMetaData& metadata, int column) {
  if (!metadata.schema()->Column(column)->logical_type()->is_string()) return false;
  for (int i = 0; i < metadata.num_row_groups(); ++i) {
    const auto stats = metadata.RowGroup(i)->ColumnChunk(column)->encoding_stats();
    const auto isInDictionary = [](const parquet::PageEncodingStats& pages) {
      return pages.page_type == parquet::PageType::DICTIONARY_PAGE ||
             pages.encoding == parquet::Encoding::RLE_DICTIONARY ||
             pages.encoding == parquet::Encoding::PLAIN_DICTIONARY;
    };
    if (stats.empty() || !std::all_of(stats.begin(), stats.end(), isInDictionary)) return false;
  }
  return true;
}

enum class Texts { kAsDeclared, kAsStored };

std::unique_ptr<parquet::arrow::FileReader> OpenReader(const std::string& path, Texts texts) {
  // The default pool keeps a fifth more of what so many columns at work have given back.
  arrow::MemoryPool* const pool = arrow::system_memory_pool();
  parquet::ReaderProperties properties(pool);
  properties.enable_buffered_stream();  // column chunks are read bit by bit, not whole
  auto arrowProperties = parquet::default_arrow_reader_properties();
  arrowProperties.set_pre_buffer(false);
  arrowProperties.set_use_threads(true);
  parquet::arrow::FileReaderBuilder builder;
  try {
    Check(builder.OpenFile(path, false, properties), path);
    std::unique_ptr<parquet::arrow::FileReader> reader;
    const auto metadata = builder.raw_reader()->metadata();
    for (int j = 0; j < metadata->num_columns(); ++j) {
      const bool isStored = texts == Texts::kAsStored && IsDictionaryOfTexts(*metadata, j);
      arrowProperties.set_read_dictionary(j, isStored);
    }
    const int columns = std::max(metadata->num_columns(), 1);
    arrowProperties.set_batch_size(
        std::clamp<std::int64_t>(kBatchCells / columns, 256, kMaxBatchCases));
    Check(builder.memory_pool(pool)->properties(arrowProperties)->Build(&reader), path);
    return reader;
  } catch (const parquet::ParquetException& error) {
    throw HostIOError(path, "", error.what());
  }
}

// How many columns can be read side by side within so many bytes. Each needs a page and a
// dictionary, unpacked, but not more than its part of a row group.
int ColumnsWithin(std::int64_t bytes, const parquet::FileMetaData& metadata) {
  std::int64_t most = 1;
  for (int i = 0; i < metadata.num_row_groups(); ++i) {
    const auto group = metadata.RowGroup(i);
    for (int j = 0; j < group->num_columns(); ++j) {
      most = std::max(most, group->ColumnChunk(j)->total_uncompressed_size());
    }
  }
  return static_cast<int>(std::max<std::int64_t>(bytes / std::min(2 * most, kColumnBytes), 1));
}

// Keeps the file reader as long as the batches are read.
class OwningReader : public arrow::RecordBatchReader {
 public:
  OwningReader(std::unique_ptr<parquet::arrow::FileReader> file,
               std::shared_ptr<arrow::RecordBatchReader> batches)
      : fpFile(std::move(file)), fpBatches(std::move(batches)) {}

  std::shared_ptr<arrow::Schema> schema() const override { return fpBatches->schema(); }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    return fpBatches->ReadNext(batch);
  }

 private:
  std::unique_ptr<parquet::arrow::FileReader> fpFile;
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
};

}  // namespace

ParquetSource::ParquetSource(std::string path) : fName(std::move(path)), fStamp(fName) {
  const auto reader = OpenReader(fName, Texts::kAsStored);
  const auto metadata = reader->parquet_reader()->metadata();
  fNCases = metadata->num_rows();
  try {
    fNColumnsAtATime = ColumnsWithin(kReadingBytes, *metadata);
  } catch (const parquet::ParquetException& error) {  // of a group that contradicts its schema
    throw HostIOError(fName, "", error.what());
  }
}

void ParquetSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  fStamp.Check(fName);
  Export(OpenReader(fName, Texts::kAsStored), columns, stream);
}

void ParquetSource::OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
  fStamp.Check(fName);
  Export(OpenReader(fName, Texts::kAsDeclared), columns, stream);
}

void ParquetSource::Export(std::unique_ptr<parquet::arrow::FileReader> file,
                           const std::vector<int>* columns, ArrowArrayStream* stream) const {
  // Nested columns are refused when the whole file is opened, so columns and leaves are the same.
  std::vector<int> groups(static_cast<std::size_t>(file->num_row_groups()));
  std::iota(groups.begin(), groups.end(), 0);
  auto batches = Value(columns == nullptr ? file->GetRecordBatchReader(groups)
                                          : file->GetRecordBatchReader(groups, *columns),
                       fName);
  auto reader = std::make_shared<OwningReader>(std::move(file), std::move(batches));
  Check(arrow::ExportRecordBatchReader(std::move(reader), stream), fName);
}

}  // namespace MCHost
