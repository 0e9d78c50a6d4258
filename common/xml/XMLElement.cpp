#include "common/xml/XMLElement.h"

#include <ostream>

#include "common/xml/XMLError.h"

namespace MCCommonXML {

namespace {

constexpr int kStep = 2;

void StartLine(std::ostream& os, int indent) {
  if (indent >= 0) os << '\n' << std::string(static_cast<std::size_t>(indent), ' ');
}

}  // namespace

std::unique_ptr<XMLElement> XMLElement::Create(const std::string& name) {
  return std::unique_ptr<XMLElement>(new XMLElement(name));
}

void XMLElement::AddAttribute(const std::string& name, const std::string& value) {
  try {
    fAttributes.emplace_back(name, XMLString::Create(value));
  } catch (const XMLError& error) {
    throw XMLError(error.what() + (" (attribute " + name + " of the element " + fName + ")"));
  }
}

void XMLElement::AddAttribute(const std::string& name, double value) {
  fAttributes.emplace_back(name, XMLString::Create(value));
}

XMLElement& XMLElement::AddChild(const std::string& name) {
  AddChild(Create(name));
  return *fChildren.back();
}

void XMLElement::AddChild(std::unique_ptr<XMLElement> child) {
  fChildren.push_back(std::move(child));
}

void XMLElement::Write(std::ostream& os, XMLString::Encoding encoding, int indent) const {
  WriteStart(os, encoding);
  if (fChildren.empty() && fpText == nullptr) {
    os << "/>";
    return;
  }
  os << '>';
  if (fpText != nullptr) os << fpText->Escaped(XMLString::Place::kText, encoding);
  const int inner = indent >= 0 ? indent + kStep : indent;
  for (const auto& child : fChildren) {
    StartLine(os, inner);
    child->Write(os, encoding, inner);
  }
  if (!fChildren.empty()) StartLine(os, indent);
  os << "</" << fName << '>';
}

void XMLElement::WriteStart(std::ostream& os, XMLString::Encoding encoding) const {
  os << '<' << fName;
  for (const auto& [name, value] : fAttributes) {
    os << ' ' << name << "=\"" << value.Escaped(XMLString::Place::kAttribute, encoding) << '"';
  }
}

}  // namespace MCCommonXML
