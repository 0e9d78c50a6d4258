// What a stream of bytes that are made out of another stream's needs besides making them.
#pragma once

#include <arrow/buffer.h>
#include <arrow/io/interfaces.h>
#include <arrow/result.h>
#include <arrow/status.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace MCHost {

class PulledStream : public arrow::io::InputStream {
 public:
  explicit PulledStream(std::shared_ptr<arrow::io::InputStream> from) : fpFrom(std::move(from)) {}

  arrow::Status Close() override { return fpFrom->Close(); }
  bool closed() const override { return fpFrom->closed(); }
  arrow::Result<std::int64_t> Tell() const override { return fTold; }

  // As many bytes as were asked for, fewer only at the end.
  arrow::Result<std::int64_t> Read(std::int64_t n, void* out) override;
  arrow::Result<std::shared_ptr<arrow::Buffer>> Read(std::int64_t n) override;

 protected:
  // Puts at most n bytes at `out`; none only at the end.
  virtual arrow::Result<std::int64_t> Pull(std::int64_t n, std::uint8_t* out) = 0;

  arrow::io::InputStream& From() { return *fpFrom; }

 private:
  std::shared_ptr<arrow::io::InputStream> fpFrom;
  std::int64_t fTold = 0;
};

}  // namespace MCHost
