// How texts and numbers stand in delimited text (RFC 4180).
#pragma once

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace MCHost {

// Appends a text, in quotes where the delimiter, a quote, a line end or a byte order mark in it
// would else be taken for the file's; "" for an empty one.
void AppendCsvText(std::string& row, std::string_view text, char delimiter);

// Whether a text that stands in a file without quotes means the same between these delimiters.
bool IsPlainCsvText(std::string_view text, char delimiter);

// Appends as few digits as read back as the same number; a whole one has no exponent as far as all
// its digits are known. Infinities are inf and -inf.
template <class Number>
void AppendNumber(std::string& text, Number value) {
  char digits[32];
  const auto append = [&](auto number) {
    text.append(digits, std::to_chars(digits, digits + sizeof(digits), number).ptr);
  };
  if constexpr (std::is_floating_point_v<Number>) {
    constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
    const bool isMinusZero = value == 0 && std::signbit(value);
    const bool isWhole = std::abs(value) < kExactIntegers && value == std::floor(value);
    if (isWhole && !isMinusZero) return append(static_cast<std::int64_t>(value));
    if (std::isnan(value)) {
      text += "NaN";
      return;
    }
  }
  append(value);
}

}  // namespace MCHost
