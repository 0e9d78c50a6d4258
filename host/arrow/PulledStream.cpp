#include "host/arrow/PulledStream.h"

namespace MCHost {

arrow::Result<std::int64_t> PulledStream::Read(std::int64_t n, void* out) {
  auto* to = static_cast<std::uint8_t*>(out);
  std::int64_t done = 0;
  while (done < n) {
    ARROW_ASSIGN_OR_RAISE(const std::int64_t pulled, Pull(n - done, to + done));
    if (pulled == 0) break;
    done += pulled;
  }
  fTold += done;
  return done;
}

arrow::Result<std::shared_ptr<arrow::Buffer>> PulledStream::Read(std::int64_t n) {
  ARROW_ASSIGN_OR_RAISE(auto buffer, arrow::AllocateResizableBuffer(n));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t done, Read(n, buffer->mutable_data()));
  ARROW_RETURN_NOT_OK(buffer->Resize(done));
  return std::shared_ptr<arrow::Buffer>(std::move(buffer));
}

}  // namespace MCHost
