// Any bytes as the saved state of a feature selection component, in its XML form.
#include <cstddef>
#include <cstdint>
#include <string>
#include <xercesc/util/PlatformUtils.hpp>

#include "feature/FSFactory.h"
#include "feature/MCStatus.h"
#include "fuzz/FeatureLaws.h"
#include "tests/modelfiles/StateStreams.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Kept for all inputs; each would start and end the parser's library otherwise.
  [[maybe_unused]] static const bool kStarted = (xercesc::XMLPlatformUtils::Initialize(), true);
  const QuietErrors quiet;
  XMLStream in(std::string(reinterpret_cast<const char*>(data), size));
  FSFactory factory;
  const auto component = factory.RestoreFSAlgorithmFromXML(in);
  PredSelectFuzz::CheckRestored(component.get(), factory, MCFeature::kBadXMLState);
  return 0;
}
