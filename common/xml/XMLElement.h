// An element of an XML document: its name, its attributes in the order of adding, and either child
// elements or a text.
//
// An element owns its children. Names are the program's own and are written as they are; values
// may be any legal text.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/xml/XMLString.h"

namespace MCCommonXML {

class XMLElement {
 public:
  static std::unique_ptr<XMLElement> Create(const std::string& name);

  // Throw XMLError as XMLString::Create does. REQUIRES: no attribute of that name is there.
  void AddAttribute(const std::string& name, const std::string& value);
  void AddAttribute(const std::string& name, double value);

  // Makes a child behind the others and returns it.
  XMLElement& AddChild(const std::string& name);
  void AddChild(std::unique_ptr<XMLElement> child);
  void SetText(const XMLString& text) { fpText = std::make_unique<XMLString>(text); }

  std::size_t GetNChildren() const { return fChildren.size(); }

  // Writes the element and all that is in it, `indent` blanks in; below 0 on one line.
  void Write(std::ostream& os, XMLString::Encoding encoding, int indent) const;

 private:
  explicit XMLElement(std::string name) : fName(std::move(name)) {}
  void WriteStart(std::ostream& os, XMLString::Encoding encoding) const;

  std::string fName;
  std::vector<std::pair<std::string, XMLString>> fAttributes;
  std::vector<std::unique_ptr<XMLElement>> fChildren;
  std::unique_ptr<XMLString> fpText;
};

}  // namespace MCCommonXML
