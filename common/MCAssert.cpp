#include "common/MCAssert.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace MCCommon {

namespace {

void PrintAndExit(const char* text, const char* source) {
  std::fprintf(stderr, "Internal error in %s: the condition \"%s\" does not hold.\n", source, text);
  std::fflush(nullptr);
  std::_Exit(kBrokenInvariantExitCode);
}

std::atomic<AssertionHandler> gHandler{&PrintAndExit};

}  // namespace

AssertionHandler SetAssertionHandler(AssertionHandler handler) {
  return gHandler.exchange(handler != nullptr ? handler : &PrintAndExit);
}

void AssertionFailed(const char* text, const char* source) {
  gHandler.load()(text, source);
  std::abort();  // a handler that returned broke its own promise
}

}  // namespace MCCommon
