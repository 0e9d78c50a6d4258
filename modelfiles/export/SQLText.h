// Names and numbers in SQL that databases read alike.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace MCModelFiles {

// "name", quotes doubled.
std::string SQLName(std::string_view name);

// 'text', quotes doubled.
std::string SQLText(std::string_view text);

// A number with an exponent, which makes it one of double precision. A database may read it one
// unit in the last place off.
std::string SQLReal(double value);

// The number to the bit, whatever a database does to the last place of what it reads: in 17 digits,
// and where its exponent is large, as a whole number times powers of two.
std::string SQLExact(double value);

// All terms, added in pairs, so that no long sum is too deep for a database. REQUIRES: there is
// one.
std::string SQLSum(const std::vector<std::string>& terms);

}  // namespace MCModelFiles
