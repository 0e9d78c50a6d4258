// A document type declaration: the root element's name and the DTD that describes it.
#pragma once

#include <string>
#include <utility>

namespace MCCommonXML {

class XMLDocType {
 public:
  // `internalSubset` stands between brackets as it is; null for none.
  static XMLDocType Create(const std::string& root, const std::string& dtd,
                           const char* internalSubset);

  // "<!DOCTYPE root SYSTEM "dtd">".
  const std::string& GetDeclaration() const { return fDeclaration; }

 private:
  explicit XMLDocType(std::string declaration) : fDeclaration(std::move(declaration)) {}

  std::string fDeclaration;
};

}  // namespace MCCommonXML
