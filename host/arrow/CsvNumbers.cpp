#include "host/arrow/CsvNumbers.h"

#include <algorithm>

namespace MCHost {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::size_t DigitsAt(std::string_view text) {
  const auto* end = std::find_if_not(text.begin(), text.end(), IsDigit);
  return static_cast<std::size_t>(end - text.begin());
}

bool HasMark(std::string_view text, const CsvNumbers& numbers) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '.' || c == numbers.fDecimal) return true;
    const bool isWithin = at > 0 && at + 1 < text.size();
    if (isWithin && ThousandsMarkAt(text.substr(at), numbers.fThousands) > 0) return true;
  }
  return false;
}

// Takes the digits before the fraction away from the start of the text; false where the groups are
// not of three, or begin with a zero.
bool TakeWhole(std::string_view& text, char mark, PlainNumber& number) {
  std::size_t n = DigitsAt(text);
  const bool isLikeFraction = text.starts_with('0');
  number.fText += text.substr(0, n);
  text.remove_prefix(n);
  while (const std::size_t length = ThousandsMarkAt(text, mark)) {
    const bool isFirst = !number.fbGrouped;
    if ((isFirst && (n == 0 || n > 3 || isLikeFraction)) || DigitsAt(text.substr(length)) != 3)
      return false;
    number.fbGrouped = true;
    number.fText += text.substr(length, 3);
    text.remove_prefix(length + 3);
  }
  return true;
}

}  // namespace

std::size_t ThousandsMarkAt(std::string_view text, char mark) {
  if (mark == kNoMark || text.empty()) return 0;
  if (text[0] == mark) return 1;
  if (mark != kAnySpace) return 0;
  if (text.starts_with("\xC2\xA0")) return 2;
  return text.starts_with("\xE2\x80\xAF") ? 3 : 0;
}

std::optional<PlainNumber> PlainNumberOf(std::string_view text, const CsvNumbers& numbers) {
  PlainNumber number;
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  if (numbers.ArePlain() || !HasMark(text, numbers)) {
    number.fText = text;
    return number;
  }
  if (text[0] == '-' || text[0] == '+') {
    number.fText = text[0];
    text.remove_prefix(1);
  }
  const bool isBareFraction = !text.empty() && text[0] == numbers.fDecimal;
  if (!TakeWhole(text, numbers.fThousands, number)) return std::nullopt;
  if (!text.empty() && text[0] == numbers.fDecimal) {
    const std::size_t n = DigitsAt(text.substr(1));
    if (n == 0 && isBareFraction) return std::nullopt;
    number.fText += ".";
    number.fText += text.substr(1, n);
    text.remove_prefix(1 + n);
  }
  if (!text.empty() && (number.fText.empty() || (text[0] != 'e' && text[0] != 'E'))) {
    return std::nullopt;
  }
  number.fText += text;  // the exponent, if it is one
  return text.find_first_of(".,") == std::string_view::npos ? std::optional(number) : std::nullopt;
}

}  // namespace MCHost
