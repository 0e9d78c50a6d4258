// A document of objects, written front to back: the form in which state is saved as XML.
//
//   <!DOCTYPE MCXMLRoot SYSTEM "savexml.dtd">
//   <MCXMLRoot name="...">
//     <Object name="NBNumericInterval">
//       <Double>1.5</Double>
//       <Double>9</Double>
//     </Object>
//   </MCXMLRoot>
//
// An object holds its fields in order, as Long, Double, String and Object elements. Documents are
// UTF-8; doubles are the shortest digits that read back as the same double. A stream that fails is
// left failed, for the caller to see.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "common/xml/XMLDocType.h"

namespace MCCommonXML {

// The XML declaration and the document type.
void ExportFormat(std::ostream& os, const XMLDocType& docType);
void StartRoot(std::ostream& os, const std::string& name);
void EndRoot(std::ostream& os);

class XMLObj {
 public:
  // `indent`: blanks before the element.
  XMLObj(std::string name, int indent) : fName(std::move(name)), fIndent(indent) {}

  void StartObj(std::ostream& os) const;
  // A double that is no number is written as "inf", "-inf" or "nan". Throws XMLError for a text
  // that XML cannot hold.
  void WriteSubElement(std::ostream& os, std::int64_t value) const;
  void WriteSubElement(std::ostream& os, double value) const;
  void WriteSubElement(std::ostream& os, const std::string& value) const;
  void EndObj(std::ostream& os) const;

  // The indent of objects inside this one.
  int InnerIndent() const { return fIndent + 2; }

 private:
  std::string fName;
  int fIndent;
};

}  // namespace MCCommonXML
