// The content of an xz file, of one stream or of several behind each other.
#pragma once

#include <lzma.h>

#include <memory>
#include <vector>

#include "host/arrow/PulledStream.h"

namespace MCHost {

class XzStream final : public PulledStream {
 public:
  explicit XzStream(std::shared_ptr<arrow::io::InputStream> packed);
  ~XzStream() override;

 private:
  arrow::Result<std::int64_t> Pull(std::int64_t n, std::uint8_t* out) override;

  lzma_stream fState = LZMA_STREAM_INIT;
  lzma_ret fStatus;
  std::vector<std::uint8_t> fPacked;
};

}  // namespace MCHost
