// A vector of doubles that begins where a cache line does, so that no vector of lanes lies across
// two of them.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

template <class Value>
struct NBLaneAllocator {
  using value_type = Value;
  static constexpr std::align_val_t kLine{64};

  NBLaneAllocator() = default;
  template <class Other>
  explicit NBLaneAllocator(const NBLaneAllocator<Other>&) {}

  Value* allocate(std::size_t n) {
    return static_cast<Value*>(::operator new(n * sizeof(Value), kLine));
  }
  void deallocate(Value* values, std::size_t) { ::operator delete(values, kLine); }
  bool operator==(const NBLaneAllocator&) const = default;
};

using NBLaneVector = std::vector<double, NBLaneAllocator<double>>;
