#include "operations/AvailableThreads.h"

#include <sched.h>

#include <algorithm>
#include <thread>

namespace PredSelect {

int AvailableThreads() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  // Fails where there are more processors than the set has room for.
  const bool isKnown = sched_getaffinity(0, sizeof allowed, &allowed) == 0;
  const int count =
      isKnown ? CPU_COUNT(&allowed) : static_cast<int>(std::thread::hardware_concurrency());
  return std::clamp(count, 1, kMostThreads);
}

}  // namespace PredSelect
