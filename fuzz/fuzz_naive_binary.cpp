// Any bytes as binary state of a Naive Bayes component.
#include <cstdint>
#include <string>

#include "fuzz/NaiveState.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QuietErrors errors;
  PredSelectFuzz::CheckComponent(
      PredSelectFuzz::FromBinary({reinterpret_cast<const char*>(data), size}));
  return 0;
}
