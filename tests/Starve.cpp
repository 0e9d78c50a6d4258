#include "tests/Starve.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local long gAllocationsLeft = -1;  // before they fail; negative: none does
thread_local bool gbOnce = false;         // one fails, and no other
thread_local bool gbRefused = false;      // one has failed
thread_local bool gbThrown = false;       // and its caller was not prepared for null

bool IsRefused() {
  if (gAllocationsLeft < 0) return false;
  if (gAllocationsLeft > 0) {
    --gAllocationsLeft;
    return false;
  }
  if (gbOnce) gAllocationsLeft = -1;
  gbRefused = true;
  return true;
}

}  // namespace

// Out of line: GCC doubts pairs of malloc and delete that it has pulled apart by inlining.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (IsRefused()) {
    gbThrown = true;
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return IsRefused() ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace MCTest {

void Starve(Places places, const std::function<void()>& call,
            const std::function<void(bool refused)>& check) {
  for (const bool isOnce : {true, false}) {
    if (isOnce && places == Places::kSome) continue;
    gbRefused = true;
    for (long room = 0; gbRefused; room += places == Places::kAll ? 1 : 1 + room / 40) {
      gbRefused = gbThrown = false;
      gbOnce = isOnce;
      gAllocationsLeft = room;
      call();
      gAllocationsLeft = -1;
      check(gbThrown);
    }
  }
}

Plenty::Plenty() : fRoom(std::exchange(gAllocationsLeft, -1)) {}
Plenty::~Plenty() { gAllocationsLeft = fRoom; }

}  // namespace MCTest
