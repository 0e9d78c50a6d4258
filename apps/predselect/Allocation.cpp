#include "apps/predselect/Allocation.h"

#include <dlfcn.h>
#include <unistd.h>
#include <unwind.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/ProgressLine.h"
#include "host/session/Unfinished.h"

namespace PredSelectApp {

namespace {

thread_local bool gtFailed = false;

}  // namespace

bool HasMemoryFailed() noexcept { return gtFailed; }

#ifndef PREDSELECT_SANITIZED
namespace {

constexpr const char* kFragile[] = {"/libarrow", "/libparquet", "/libxerces"};
constexpr const char* kFragileName =
    "nlohmann";  // in symbols, being compiled into the program's own

bool IsFragile(const Dl_info& place) {
  if (place.dli_sname != nullptr && std::strstr(place.dli_sname, kFragileName) != nullptr) {
    return true;
  }
  return std::ranges::any_of(kFragile, [&place](const char* library) {
    return std::strstr(place.dli_fname, library) != nullptr;
  });
}

_Unwind_Reason_Code LookAt(_Unwind_Context* frame, void* isFragile) {
  Dl_info place{};
  const auto address = reinterpret_cast<void*>(_Unwind_GetIP(frame));
  if (dladdr(address, &place) == 0 || place.dli_fname == nullptr || !IsFragile(place)) {
    return _URC_NO_REASON;
  }
  *static_cast<bool*>(isFragile) = true;
  return _URC_END_OF_STACK;
}

// Whether what is thrown now would pass a library that does not unwind.
bool IsInFragileCode() {
  bool isFragile = false;
  _Unwind_Backtrace(LookAt, &isFragile);
  return isFragile;
}

}  // namespace
#endif

void EndWithoutMemory() noexcept {
  MCHost::RemoveUnfinished();
  ProgressLine::Erase();
  (void)!write(STDERR_FILENO, kNoMemoryText, sizeof kNoMemoryText - 1);
  _exit(kDataError);
}

}  // namespace PredSelectApp

#ifndef PREDSELECT_SANITIZED
// In place of the standard library's, and for all libraries. The forms for arrays go through these.
void* operator new(std::size_t size) {
  if (void* memory = std::malloc(std::max<std::size_t>(size, 1))) return memory;
  PredSelectApp::gtFailed = true;
  if (PredSelectApp::IsInFragileCode()) PredSelectApp::EndWithoutMemory();
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(std::max<std::size_t>(size, 1));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
#endif
