#include "host/arrow/XzStream.h"

#include <limits>
#include <utility>

namespace MCHost {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 16;

}  // namespace

XzStream::XzStream(std::shared_ptr<arrow::io::InputStream> packed)
    : PulledStream(std::move(packed)),
      fStatus(lzma_stream_decoder(&fState, std::numeric_limits<std::uint64_t>::max(),
                                  LZMA_CONCATENATED)),
      fPacked(kPieceBytes) {}

XzStream::~XzStream() { lzma_end(&fState); }

arrow::Result<std::int64_t> XzStream::Pull(std::int64_t n, std::uint8_t* out) {
  fState.next_out = out;
  fState.avail_out = static_cast<std::size_t>(n);
  while (fStatus == LZMA_OK && fState.avail_out > 0) {
    lzma_action action = LZMA_RUN;
    if (fState.avail_in == 0) {
      const auto most = static_cast<std::int64_t>(fPacked.size());
      ARROW_ASSIGN_OR_RAISE(const std::int64_t got, From().Read(most, fPacked.data()));
      fState.next_in = fPacked.data();
      fState.avail_in = static_cast<std::size_t>(got);
      if (got == 0) action = LZMA_FINISH;
    }
    fStatus = lzma_code(&fState, action);
  }
  if (fStatus == LZMA_MEM_ERROR) return arrow::Status::OutOfMemory("xz");
  if (fStatus == LZMA_BUF_ERROR) return arrow::Status::IOError("the xz file ends too early");
  if (fStatus != LZMA_OK && fStatus != LZMA_STREAM_END) {
    return arrow::Status::IOError("the xz file is damaged");
  }
  return n - static_cast<std::int64_t>(fState.avail_out);
}

}  // namespace MCHost
