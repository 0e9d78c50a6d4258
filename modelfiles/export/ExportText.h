// Numbers and names as exported models write them.
#pragma once

#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace MCModelFiles {

// What a format cannot hold; the text says what and where.
class ExportError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The shortest digits that read back as the same double, with a point or an exponent: in one
// document all numbers have the same type. REQUIRES: the number is finite.
std::string RealDigits(double value);

// The text, and a number behind it where it is taken already; it is taken then.
std::string Untaken(const std::string& text, std::set<std::string>& taken);

// Letters, digits and underscores of ASCII, the first no digit.
std::string PlainName(std::string_view text);

}  // namespace MCModelFiles
