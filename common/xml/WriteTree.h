// Writes a whole XML document: declaration, document type and the tree of elements.
#pragma once

#include <iosfwd>

namespace MCCommonXML {

class XMLDocType;
class XMLElement;

// In US-ASCII, other characters as references. The document type may be null; `indented` puts each
// element on a line of its own. A stream that fails is left failed, for the caller to see.
void WriteTree(std::ostream& os, const XMLDocType* docType, const XMLElement& root, bool indented);
// In UTF-8.
void WriteTreeUTF8(std::ostream& os, const XMLDocType* docType, const XMLElement& root,
                   bool indented);

}  // namespace MCCommonXML
