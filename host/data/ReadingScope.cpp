#include "host/data/ReadingScope.h"

#include <utility>

namespace MCHost {

namespace {
thread_local ReadingScope* gpCurrent = nullptr;
}

ReadingScope::ReadingScope(Listener listener)
    : fListener(std::move(listener)), fpPrevious(gpCurrent) {
  gpCurrent = this;
}

ReadingScope::~ReadingScope() { gpCurrent = fpPrevious; }

void ReadingScope::Report(std::int64_t cells) {
  if (gpCurrent == nullptr) return;
  gpCurrent->fNCells += cells;
  gpCurrent->fListener(gpCurrent->fNCells);
}

}  // namespace MCHost
