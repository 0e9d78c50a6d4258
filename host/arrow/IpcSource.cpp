#include "host/arrow/IpcSource.h"

#include <arrow/buffer.h>
#include <arrow/c/bridge.h>
#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/memory_pool.h>
#include <arrow/record_batch.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/MappedBatches.h"

namespace MCHost {

namespace {

constexpr std::string_view kFileMagic = "ARROW1";

// What reading may take, and what a cell takes.
constexpr std::int64_t kReadingBytes = std::int64_t{64} << 20;
constexpr std::int64_t kCellBytes = 8;

// Batch after batch of a file in the file form.
class FileBatches : public arrow::RecordBatchReader {
 public:
  explicit FileBatches(std::shared_ptr<arrow::ipc::RecordBatchFileReader> file)
      : fpFile(std::move(file)) {}
  ~FileBatches() override { GiveBack(); }

  std::shared_ptr<arrow::Schema> schema() const override { return fpFile->schema(); }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    if (fNext == fpFile->num_record_batches()) {
      batch->reset();
      return arrow::Status::OK();
    }
    GiveBack();
    return fpFile->ReadRecordBatch(fNext++).Value(batch);
  }

 private:
  // Room is taken for a whole batch even where few of its columns are read. Unless it is given
  // back, each group of columns touches another part of it until all of it is in use.
  static void GiveBack() { arrow::default_memory_pool()->ReleaseUnused(); }

  std::shared_ptr<arrow::ipc::RecordBatchFileReader> fpFile;
  int fNext = 0;
};

// Refuses batches that claim more cells than there are bytes for, which nobody behind it can see.
class SoundBatches : public arrow::RecordBatchReader {
 public:
  explicit SoundBatches(std::shared_ptr<arrow::RecordBatchReader> batches)
      : fpBatches(std::move(batches)) {}

  std::shared_ptr<arrow::Schema> schema() const override { return fpBatches->schema(); }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    ARROW_RETURN_NOT_OK(fpBatches->ReadNext(batch));
    return *batch == nullptr ? arrow::Status::OK() : (*batch)->Validate();
  }

 private:
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
};

}  // namespace

IpcSource::IpcSource(std::string path) : fName(std::move(path)), fStamp(fName) {
  // Counting cases goes through all batches; in a mapped file that does not read them.
  const auto file =
      Value(arrow::io::MemoryMappedFile::Open(fName, arrow::io::FileMode::READ), fName);
  const auto start = Value(file->ReadAt(0, static_cast<std::int64_t>(kFileMagic.size())), fName);
  fbStreamForm = std::string_view(*start) != kFileMagic;
  if (fbStreamForm) return;
  const auto reader = Value(arrow::ipc::RecordBatchFileReader::Open(file), fName);
  fNCases = Value(reader->CountRows(), fName);
  fbMapped = MappedBatches::Fits(fName);
  if (fbMapped) return;
  // A batch is read as a whole, packed and unpacked.
  const std::int64_t batchCases = fNCases / std::max(reader->num_record_batches(), 1);
  const std::int64_t columnBytes = std::max<std::int64_t>(batchCases * 2 * kCellBytes, 1);
  fNColumnsAtATime = static_cast<int>(std::max<std::int64_t>(kReadingBytes / columnBytes, 1));
}

void IpcSource::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  auto options = arrow::ipc::IpcReadOptions::Defaults();
  if (columns != nullptr) options.included_fields = *columns;
  fStamp.Check(fName);
  std::shared_ptr<arrow::RecordBatchReader> reader;
  if (fbMapped) {
    const auto wanted = columns != nullptr ? std::optional(*columns) : std::nullopt;
    reader = std::make_shared<MappedBatches>(fName, wanted);
  } else {
    const auto file = Value(arrow::io::ReadableFile::Open(fName), fName);
    if (fbStreamForm) {
      reader = Value(arrow::ipc::RecordBatchStreamReader::Open(file, options), fName);
    } else {
      reader = std::make_shared<FileBatches>(
          Value(arrow::ipc::RecordBatchFileReader::Open(file, options), fName));
    }
  }
  Check(arrow::ExportRecordBatchReader(std::make_shared<SoundBatches>(std::move(reader)), stream),
        fName);
}

}  // namespace MCHost
