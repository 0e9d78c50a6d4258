#include "host/arrow/MappedBatches.h"

#include <arrow/array.h>
#include <arrow/io/file.h>
#include <sys/mman.h>

#include <algorithm>
#include <functional>
#include <utility>

#include "host/arrow/ArrowFailure.h"

namespace MCHost {

namespace {

// Cases that are looked at before the memory is given back.
constexpr std::int64_t kSliceCases = 16384;

// What reading a batch that lies there unpacked takes at most.
constexpr std::int64_t kFrameBytes = std::int64_t{1} << 20;

using FileReader = arrow::ipc::RecordBatchFileReader;

// Memory for so much and no more. It is never given up: what a reader holds may be freed by another
// thread after the reader is gone.
arrow::MemoryPool* FramePool() {
  static auto* const own = arrow::MemoryPool::CreateDefault().release();
  static auto* const pool = new arrow::CappedMemoryPool(own, kFrameBytes);
  return pool;
}

}  // namespace

MappedBatches::MappedBatches(const std::string& path, std::optional<std::vector<int>> columns,
                             arrow::MemoryPool* pool)
    : fColumns(std::move(columns)) {
  const auto file = Value(arrow::io::MemoryMappedFile::Open(path, arrow::io::FileMode::READ), path);
  fpBytes = Value(file->ReadAt(0, Value(file->GetSize(), path)), path);
  auto options = arrow::ipc::IpcReadOptions::Defaults();
  // Files need not place their cells as the processor wants them; those are copied.
  options.memory_pool = pool;
  options.ensure_alignment = arrow::ipc::Alignment::kDataTypeSpecificAlignment;
  fpFile = Value(FileReader::Open(file, options), path);
  fpSchema = fpFile->schema();
  if (!fColumns) return;
  arrow::FieldVector fields;
  for (const int column : *fColumns) fields.push_back(fpSchema->field(column));
  fpSchema = arrow::schema(std::move(fields), fpSchema->metadata());
}

arrow::Status MappedBatches::ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) {
  batch->reset();
  Forget();
  while (fpBatch == nullptr || fAt == fpBatch->num_rows()) {
    fAt = 0;
    fpBatch.reset();
    if (fNext == fpFile->num_record_batches()) return arrow::Status::OK();
    ARROW_ASSIGN_OR_RAISE(fpBatch, fpFile->ReadRecordBatch(fNext++));
    if (!fColumns) continue;
    ARROW_ASSIGN_OR_RAISE(fpBatch, fpBatch->SelectColumns(*fColumns));
  }
  *batch = fpBatch->Slice(fAt, kSliceCases);
  fAt += (*batch)->num_rows();
  return arrow::Status::OK();
}

bool MappedBatches::Fits(const std::string& path) {
  const MappedBatches mapped(path, {}, FramePool());
  if (mapped.fpFile->num_record_batches() == 0) return true;
  const auto batch = mapped.fpFile->ReadRecordBatch(0);
  if (!batch.ok()) return false;
  const auto columns = (*batch)->column_data();
  return std::all_of(columns.begin(), columns.end(),
                     [&mapped](const auto& column) { return mapped.Holds(*column); });
}

bool MappedBatches::Holds(const arrow::ArrayData& column) const {
  const std::uint8_t* const end = fpBytes->data() + fpBytes->size();
  const std::less_equal<> isBefore;
  return std::all_of(column.buffers.begin(), column.buffers.end(), [&](const auto& buffer) {
    if (buffer == nullptr || buffer->size() == 0) return true;
    return isBefore(fpBytes->data(), buffer->data()) && isBefore(buffer->data(), end);
  });
}

// What was given back can be looked at again.
void MappedBatches::Forget() const {
  madvise(const_cast<std::uint8_t*>(fpBytes->data()), static_cast<std::size_t>(fpBytes->size()),
          MADV_DONTNEED);
}

}  // namespace MCHost
