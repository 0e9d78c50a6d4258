#include "modelfiles/export/ExportText.h"

#include <array>
#include <charconv>

namespace MCModelFiles {

std::string RealDigits(double value) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  std::string text(digits.data(), end);
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

std::string Untaken(const std::string& text, std::set<std::string>& taken) {
  std::string name = text;
  for (int i = 2; !taken.insert(name).second; ++i) name = text + "_" + std::to_string(i);
  return name;
}

std::string PlainName(std::string_view text) {
  std::string name;
  for (const char c : text) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool isDigit = c >= '0' && c <= '9';
    if (isDigit && name.empty()) name = "_";
    name += isLetter || isDigit ? c : '_';
  }
  return name.empty() ? "_" : name;
}

}  // namespace MCModelFiles
