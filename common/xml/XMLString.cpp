#include "common/xml/XMLString.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <xercesc/util/XMLChar.hpp>

#include "common/xml/XMLError.h"

namespace MCCommonXML {

namespace {

constexpr std::uint32_t kNotUTF8 = 0xFFFFFFFF;

// The character that starts at `at`, which moves behind it; kNotUTF8 for a malformed, overlong or
// surrogate sequence.
std::uint32_t NextCharacter(std::string_view text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at++]);
  if (lead < 0x80) return lead;
  const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  constexpr std::uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  if (lead < 0xC2 || lead > 0xF4) return kNotUTF8;
  std::uint32_t character = lead & (0x3FU >> following);
  for (int i = 0; i < following; ++i) {
    if (at == text.size()) return kNotUTF8;
    const auto next = static_cast<unsigned char>(text[at++]);
    if ((next & 0xC0U) != 0x80) return kNotUTF8;
    character = character << 6U | (next & 0x3FU);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  return character < kLeast[following] || character > 0x10FFFF || surrogate ? kNotUTF8 : character;
}

bool IsLegal(std::uint32_t character) {
  using xercesc::XMLChar1_0;
  if (character == kNotUTF8) return false;
  if (character > 0xFFFF) return true;  // the supplementary planes are legal throughout
  return XMLChar1_0::isXMLChar(static_cast<XMLCh>(character));
}

[[noreturn]] void Refuse(std::uint32_t character, std::string_view text) {
  std::array<char, 16> name{};
  std::snprintf(name.data(), name.size(), "U+%04X", character);
  std::string shown;
  for (const char c : text.substr(0, 60)) shown += c >= ' ' && c < 0x7F ? c : '?';
  throw XMLError(character == kNotUTF8 ? "The text \"" + shown + "\" is not UTF-8"
                                       : "The text \"" + shown + "\" holds the character " +
                                             name.data() + ", which an XML document cannot hold");
}

std::string Reference(std::uint32_t character) { return "&#" + std::to_string(character) + ";"; }

// What markup takes for itself; null for a character that stands for itself.
const char* Entity(std::uint32_t character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return nullptr;
  }
}

// Parsers turn line ends into line feeds, and blanks of an attribute into spaces.
bool IsNormalised(std::uint32_t character, XMLString::Place place) {
  if (character == '\r') return true;
  return place == XMLString::Place::kAttribute && (character == '\t' || character == '\n');
}

}  // namespace

XMLString XMLString::Create(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::uint32_t character = NextCharacter(text, at);
    if (!IsLegal(character)) Refuse(character, text);
  }
  return XMLString(std::string(text));
}

XMLString XMLString::Create(double value) {
  if (!std::isfinite(value)) throw XMLError("a number that is not finite has no place in XML");
  std::array<char, 32> digits{};
  char* const first = digits.data();
  char* const last = first + digits.size();
  const bool isWhole = std::abs(value) < 0x1p53 && value == std::trunc(value);
  char* const end = isWhole ? std::to_chars(first, last, value, std::chars_format::fixed).ptr
                            : std::to_chars(first, last, value).ptr;
  return XMLString(std::string(first, end));
}

std::string XMLString::Escaped(Place place, Encoding encoding) const {
  std::string escaped;
  escaped.reserve(fText.size());
  for (std::size_t at = 0; at < fText.size();) {
    const std::size_t start = at;
    const std::uint32_t character = NextCharacter(fText, at);
    if (const char* entity = Entity(character)) {
      escaped += entity;
    } else if (IsNormalised(character, place) ||
               (encoding == Encoding::kASCII && character > 0x7F)) {
      escaped += Reference(character);
    } else {
      escaped.append(fText, start, at - start);
    }
  }
  return escaped;
}

}  // namespace MCCommonXML
