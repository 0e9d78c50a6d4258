#include "common/xml/WriteTree.h"

#include <ostream>

#include "common/xml/XMLDocType.h"
#include "common/xml/XMLElement.h"

namespace MCCommonXML {

namespace {

void Write(std::ostream& os, const XMLDocType* docType, const XMLElement& root, bool indented,
           XMLString::Encoding encoding) {
  const bool utf8 = encoding == XMLString::Encoding::kUTF8;
  os << "<?xml version=\"1.0\" encoding=\"" << (utf8 ? "UTF-8" : "US-ASCII") << "\"?>\n";
  if (docType != nullptr) os << docType->GetDeclaration() << '\n';
  root.Write(os, encoding, indented ? 0 : -1);
  os << '\n';
}

}  // namespace

void WriteTree(std::ostream& os, const XMLDocType* docType, const XMLElement& root, bool indented) {
  Write(os, docType, root, indented, XMLString::Encoding::kASCII);
}

void WriteTreeUTF8(std::ostream& os, const XMLDocType* docType, const XMLElement& root,
                   bool indented) {
  Write(os, docType, root, indented, XMLString::Encoding::kUTF8);
}

}  // namespace MCCommonXML
