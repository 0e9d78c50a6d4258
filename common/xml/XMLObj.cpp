#include "common/xml/XMLObj.h"

#include <cmath>
#include <ostream>

#include "common/xml/XMLString.h"

namespace MCCommonXML {

namespace {

std::string Attribute(const std::string& text) {
  return XMLString::Create(text).Escaped(XMLString::Place::kAttribute, XMLString::Encoding::kUTF8);
}

std::string Blanks(int n) { return std::string(static_cast<std::size_t>(n), ' '); }

void WriteField(std::ostream& os, int indent, const char* kind, const std::string& escaped) {
  os << Blanks(indent) << '<' << kind << '>' << escaped << "</" << kind << ">\n";
}

}  // namespace

void ExportFormat(std::ostream& os, const XMLDocType& docType) {
  os << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" << docType.GetDeclaration() << '\n';
}

void StartRoot(std::ostream& os, const std::string& name) {
  os << "<MCXMLRoot name=\"" << Attribute(name) << "\">\n";
}

void EndRoot(std::ostream& os) { os << "</MCXMLRoot>\n"; }

void XMLObj::StartObj(std::ostream& os) const {
  os << Blanks(fIndent) << "<Object name=\"" << Attribute(fName) << "\">\n";
}

void XMLObj::WriteSubElement(std::ostream& os, std::int64_t value) const {
  WriteField(os, InnerIndent(), "Long", std::to_string(value));
}

void XMLObj::WriteSubElement(std::ostream& os, double value) const {
  const std::string digits =
      std::isfinite(value)
          ? XMLString::Create(value).Escaped(XMLString::Place::kText, XMLString::Encoding::kUTF8)
      : std::isnan(value) ? "nan"
      : value > 0         ? "inf"
                          : "-inf";
  WriteField(os, InnerIndent(), "Double", digits);
}

void XMLObj::WriteSubElement(std::ostream& os, const std::string& value) const {
  WriteField(os, InnerIndent(), "String",
             XMLString::Create(value).Escaped(XMLString::Place::kText, XMLString::Encoding::kUTF8));
}

void XMLObj::EndObj(std::ostream& os) const { os << Blanks(fIndent) << "</Object>\n"; }

}  // namespace MCCommonXML
