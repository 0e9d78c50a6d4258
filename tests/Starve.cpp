#include "tests/Starve.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local long gAllocationsLeft = -1;  // before they fail; negative: none does
thread_local bool gbRefused = false;      // one has failed

}  // namespace

// Out of line: GCC doubts pairs of malloc and delete that it has pulled apart by inlining.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (gAllocationsLeft == 0) {
    gbRefused = true;
    throw std::bad_alloc();
  }
  if (gAllocationsLeft > 0) --gAllocationsLeft;
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace MCTest {

void Starve(const std::function<void()>& call, const std::function<void(bool refused)>& check) {
  gbRefused = true;
  for (long room = 0; gbRefused; room += 1 + room / 40) {
    gbRefused = false;
    gAllocationsLeft = room;
    call();
    gAllocationsLeft = -1;
    check(gbRefused);
  }
}

Plenty::Plenty() : fRoom(std::exchange(gAllocationsLeft, -1)) {}
Plenty::~Plenty() { gAllocationsLeft = fRoom; }

}  // namespace MCTest
