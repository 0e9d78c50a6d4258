#include "host/session/Unfinished.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace MCHost {

namespace {

// Each in a slot of its own: a signal handler may neither lock nor allocate. The owner of a slot
// keeps the text until it has cleared the slot.
std::array<std::atomic<const char*>, 64> gPaths{};

}  // namespace

int RegisterUnfinished(const char* path) {
  for (std::size_t i = 0; i < gPaths.size(); ++i) {
    const char* free = nullptr;
    if (gPaths[i].compare_exchange_strong(free, path)) return static_cast<int>(i);
  }
  return -1;
}

void ForgetUnfinished(int slot) {
  if (slot >= 0) gPaths[static_cast<std::size_t>(slot)].store(nullptr);
}

void RemoveUnfinished() noexcept {
  for (const auto& path : gPaths) {
    if (const char* file = path.load()) unlink(file);
  }
  for (auto path = gPaths.rbegin(); path != gPaths.rend(); ++path) {
    if (const char* folder = path->exchange(nullptr)) rmdir(folder);
  }
}

}  // namespace MCHost
