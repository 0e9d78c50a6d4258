// A file in the Arrow IPC format whose cells are looked at where they lie, without reading it.
//
// The file is mapped into memory, and what was looked at is given back as the reading goes on. It
// must not be cut short while that lasts.
#pragma once

#include <arrow/buffer.h>
#include <arrow/ipc/reader.h>
#include <arrow/memory_pool.h>
#include <arrow/record_batch.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace MCHost {

class MappedBatches final : public arrow::RecordBatchReader {
 public:
  // The columns at the given places, all without them. Throws HostIOError.
  MappedBatches(const std::string& path, std::optional<std::vector<int>> columns,
                arrow::MemoryPool* pool = arrow::default_memory_pool());
  ~MappedBatches() override { Forget(); }

  std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override;

  // Whether the cells lie in the file as they are, not packed, as far as the first batch tells.
  // Throws HostIOError.
  static bool Fits(const std::string& path);

 private:
  bool Holds(const arrow::ArrayData& column) const;
  void Forget() const;

  std::shared_ptr<arrow::Buffer> fpBytes;
  std::shared_ptr<arrow::ipc::RecordBatchFileReader> fpFile;
  std::optional<std::vector<int>> fColumns;
  std::shared_ptr<arrow::Schema> fpSchema;
  int fNext = 0;
  std::shared_ptr<arrow::RecordBatch> fpBatch;
  std::int64_t fAt = 0;  // the next case of the batch
};

}  // namespace MCHost
