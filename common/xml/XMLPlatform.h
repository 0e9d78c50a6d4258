// Keeps the XML parser initialised.
#pragma once

#include <mutex>
#include <xercesc/util/PlatformUtils.hpp>

namespace MCCommonXML {

// Xerces must be initialised as long as any of its objects lives; it counts, but not safely where
// several threads read a document each.
class XMLPlatform {
 public:
  XMLPlatform() {
    const std::lock_guard lock(gCounting);
    xercesc::XMLPlatformUtils::Initialize();
  }
  XMLPlatform(const XMLPlatform&) = delete;
  XMLPlatform& operator=(const XMLPlatform&) = delete;
  ~XMLPlatform() {
    const std::lock_guard lock(gCounting);
    xercesc::XMLPlatformUtils::Terminate();
  }

 private:
  static inline std::mutex gCounting;
};

}  // namespace MCCommonXML
