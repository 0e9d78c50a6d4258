#include "common/xml/XMLDocType.h"

namespace MCCommonXML {

XMLDocType XMLDocType::Create(const std::string& root, const std::string& dtd,
                              const char* internalSubset) {
  std::string declaration = "<!DOCTYPE " + root + " SYSTEM \"" + dtd + '"';
  if (internalSubset != nullptr) declaration += std::string(" [") + internalSubset + "]";
  return XMLDocType(declaration + ">");
}

}  // namespace MCCommonXML
