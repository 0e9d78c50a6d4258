// What the XML layer throws: a text that XML cannot hold, or a stream that could not be written.
#pragma once

#include <stdexcept>

namespace MCCommonXML {

class XMLError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace MCCommonXML
