// A text for an XML document: UTF-8 that XML 1.0 can hold, in the form in which it is written.
#pragma once

#include <string>
#include <string_view>

namespace MCCommonXML {

class XMLString {
 public:
  // Where a text is written decides what is escaped, how characters beyond ASCII are.
  enum class Place { kText, kAttribute };
  enum class Encoding { kASCII, kUTF8 };

  // Throws XMLError, naming the character and the text, for bytes that are not UTF-8 and for
  // characters that XML 1.0 has no place for (control characters other than tab, line feed and
  // carriage return, U+FFFE, U+FFFF).
  static XMLString Create(std::string_view text);

  // The shortest digits that read back as the same double; whole numbers below 2^53 without an
  // exponent, so that they read as integers, too. Throws XMLError for a number that is not finite.
  static XMLString Create(double value);

  // The text with markup characters escaped; what an XML parser reads back is the text itself,
  // tabs and line ends included. kASCII writes other characters as references.
  std::string Escaped(Place place, Encoding encoding) const;

 private:
  explicit XMLString(std::string text) : fText(std::move(text)) {}

  std::string fText;
};

}  // namespace MCCommonXML
