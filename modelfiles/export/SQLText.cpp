#include "modelfiles/export/SQLText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace MCModelFiles {

namespace {

std::string Quoted(std::string_view text, char quote) {
  std::string quoted(1, quote);
  for (const char c : text) quoted.append(c == quote ? 2 : 1, c);
  return quoted + quote;
}

std::string WithExponent(std::string digits) {
  const std::size_t exponent = digits.find('e');
  if (exponent == std::string::npos) return digits + "E0";
  digits[exponent] = 'E';
  return digits;
}

std::string Sum(std::span<const std::string> terms) {
  constexpr std::size_t kInOneRow = 16;
  if (terms.size() > kInOneRow) {
    const std::size_t half = terms.size() / 2;
    return "(" + Sum(terms.first(half)) + ")\n      + (" + Sum(terms.subspan(half)) + ")";
  }
  std::string sum;
  for (const std::string& term : terms) sum += (sum.empty() ? "" : "\n      + ") + term;
  return sum;
}

std::string InPowersOfTwo(double value) {
  constexpr int kMost = 62;
  int exponent = 0;
  double whole = std::frexp(value, &exponent);
  while (whole != std::trunc(whole)) {
    whole *= 2;
    --exponent;
  }
  std::string text = "(CAST(" + SQLReal(whole) + " AS DOUBLE PRECISION)";
  while (exponent != 0) {
    const int step = std::min(std::abs(exponent), kMost);
    text += exponent > 0 ? " * " : " / ";
    text += std::to_string(std::int64_t{1} << step) + "E0";
    exponent += exponent > 0 ? -step : step;
  }
  return text + ")";
}

}  // namespace

std::string SQLName(std::string_view name) { return Quoted(name, '"'); }

std::string SQLText(std::string_view text) { return Quoted(text, '\''); }

std::string SQLReal(double value) {
  std::array<char, 32> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return WithExponent({digits.data(), end});
}

std::string SQLExact(double value) {
  constexpr int kShort = 15;  // digits that any reader gets right
  constexpr int kAll = 17;
  const double size = std::abs(value);
  if (size != 0 && (size < 1e-20 || size > 1e25)) return InPowersOfTwo(value);
  const std::string shortest = SQLReal(value);
  const auto nDigits = std::count_if(shortest.begin(), shortest.begin() + shortest.find('E'),
                                     [](char c) { return c >= '0' && c <= '9'; });
  if (nDigits <= kShort) return shortest;
  std::array<char, 40> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::scientific, kAll - 1)
                       .ptr;
  return WithExponent({digits.data(), end});
}

std::string SQLSum(const std::vector<std::string>& terms) { return Sum(terms); }

}  // namespace MCModelFiles
