#include "host/data/ReadingScope.h"

#include <utility>

namespace MCHost {

namespace {
thread_local ReadingScope* gpCurrent = nullptr;
}

ReadingScope::ReadingScope(ColumnsListener columns, Listener cells)
    : fColumns(std::move(columns)), fCells(std::move(cells)), fpPrevious(gpCurrent) {
  gpCurrent = this;
}

ReadingScope::~ReadingScope() { gpCurrent = fpPrevious; }

void ReadingScope::ReportColumns(const std::vector<std::string>& names) {
  if (gpCurrent == nullptr || std::exchange(gpCurrent->fbColumnsKnown, true)) return;
  gpCurrent->fColumns(names);
}

void ReadingScope::Report(std::int64_t cells) {
  if (gpCurrent == nullptr) return;
  gpCurrent->fNCells += cells;
  gpCurrent->fCells(gpCurrent->fNCells);
}

}  // namespace MCHost
