#include "fuzz/FuzzCheck.h"

#include <cstdio>
#include <cstdlib>
#include <functional>

#include "common/MCAssert.h"

namespace {

[[noreturn]] void PrintAndAbort(const char* text, const char* source) {
  std::fprintf(stderr, "Internal error in %s: the condition \"%s\" does not hold.\n", source, text);
  std::abort();
}

}  // namespace

// Called by the fuzzer once, before the first input.
extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  MCCommon::SetAssertionHandler(PrintAndAbort);
  return 0;
}

namespace PredSelectFuzz {

void Require(bool holds, const char* law, const std::string& broken) {
  if (holds) return;
  std::fprintf(stderr, "Does not hold: %s.\n", law);
  std::fwrite(broken.data(), 1, broken.size(), stderr);
  std::fputc('\n', stderr);
  std::abort();
}

bool IsOneInEight(const std::string& input) { return std::hash<std::string>()(input) % 8 == 0; }

}  // namespace PredSelectFuzz
