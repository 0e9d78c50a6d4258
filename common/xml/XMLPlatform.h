// Keeps the XML parser initialised.
#pragma once

namespace MCCommonXML {

// Xerces must be initialised as long as any of its objects lives; it counts, but not safely where
// several threads read a document each.
class XMLPlatform {
 public:
  // Throws std::bad_alloc where it does not come up, now or before: it cannot be begun again.
  XMLPlatform();
  XMLPlatform(const XMLPlatform&) = delete;
  XMLPlatform& operator=(const XMLPlatform&) = delete;
  ~XMLPlatform();
};

}  // namespace MCCommonXML
