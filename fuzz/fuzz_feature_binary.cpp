// Any bytes as the saved state of a feature selection component, in its binary form.
#include <cstddef>
#include <cstdint>
#include <string>

#include "feature/FSFactory.h"
#include "feature/MCStatus.h"
#include "fuzz/FeatureLaws.h"
#include "tests/modelfiles/StateStreams.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QuietErrors quiet;
  BinaryStream in(std::string(reinterpret_cast<const char*>(data), size));
  FSFactory factory;
  const auto component = factory.RestoreFSAlgorithmFromBinary(in);
  PredSelectFuzz::CheckRestored(component.get(), factory, MCFeature::kBadBinaryState);
  return 0;
}
