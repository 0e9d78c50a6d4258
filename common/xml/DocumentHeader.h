// The Header element that model and result documents share: copyright, application, local time.
#pragma once

#include <iosfwd>
#include <string>

struct MCApplicInfo4XML;
namespace MCCommonXML {
class XMLDocType;
class XMLElement;
}  // namespace MCCommonXML

namespace MCModelFiles {

// The line that documents carry unless an application says another.
std::string Copyright();

// Adds the header to a document's root. Whatever `info` does not say (null: everything) is said of
// the component: its name, version "1.0" and PredSelect's copyright line.
// Throws XMLError for a text that XML cannot hold.
void AddHeader(MCCommonXML::XMLElement& root, const std::string& componentName,
               const MCApplicInfo4XML* info);

// Writes a document in the encoding that `info` asks for (null: ASCII); the type may be null.
void WriteDocument(std::ostream& os, const MCCommonXML::XMLDocType* docType,
                   const MCCommonXML::XMLElement& root, const MCApplicInfo4XML* info);

}  // namespace MCModelFiles
