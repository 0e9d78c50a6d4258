// Memory that is there or throws.
//
// Tables of values with which Parquet packs columns pass over the status of an allocation that
// failed, and write to where nothing is.
#pragma once

#include <arrow/memory_pool.h>
#include <arrow/status.h>

#include <cstdint>
#include <new>

namespace MCHost {

class FirmPool final : public arrow::ProxyMemoryPool {
 public:
  FirmPool() : ProxyMemoryPool(arrow::default_memory_pool()) {}

  using MemoryPool::Allocate;
  using MemoryPool::Reallocate;

  arrow::Status Allocate(std::int64_t size, std::int64_t alignment, std::uint8_t** out) override {
    return Firm(ProxyMemoryPool::Allocate(size, alignment, out));
  }
  arrow::Status Reallocate(std::int64_t oldSize, std::int64_t newSize, std::int64_t alignment,
                           std::uint8_t** memory) override {
    return Firm(ProxyMemoryPool::Reallocate(oldSize, newSize, alignment, memory));
  }

 private:
  static arrow::Status Firm(arrow::Status status) {
    if (status.IsOutOfMemory()) throw std::bad_alloc();
    return status;
  }
};

}  // namespace MCHost
