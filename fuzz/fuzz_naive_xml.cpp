// Any bytes as an XML document of a Naive Bayes component.
#include <cstdint>
#include <string>

#include "fuzz/NaiveState.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QuietErrors errors;
  PredSelectFuzz::CheckComponent(
      PredSelectFuzz::FromXML({reinterpret_cast<const char*>(data), size}));
  return 0;
}
