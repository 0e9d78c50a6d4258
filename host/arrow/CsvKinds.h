// What the texts of a CSV column can be read as.
//
// A text fits a set of kinds, a column the kinds that all its texts have in common. A column that
// has none left is text; one that has all of them held nothing but nulls.
#pragma once

#include <arrow/type_fwd.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace MCHost {

enum CsvKind : unsigned {
  kCsvText = 0,
  kCsvBoolean = 1,     // true, false
  kCsvNumber = 2,      // 12, -0.5, 1e5, inf
  kCsvDate = 4,        // 2024-02-29
  kCsvDateTime = 8,    // a date with or without a time, no zone: 2024-02-29 12:30
  kCsvZonedTime = 16,  // a date with a time and a zone: 2024-02-29T12:30:00Z
  kCsvTime = 32,       // 12:30, 12:30:00.5
  // The same by nanoseconds, which are asked for by more than six digits and have fewer years.
  kCsvNanoDateTime = 64,
  kCsvNanoZonedTime = 128,
  kCsvNanoTime = 256,
  kCsvTypes = 511,

  // How the text is spelled: whether a value of its type tells all that it says.
  kCsvWhole = 512,     // a 64-bit integer tells it: 12, but not 007, -0 or 1.0
  kCsvHeld = 1024,     // the value that is read tells it, but for blanks around it
  kCsvMayHold = 2048,  // CsvHoldsDigits() decides; every text that is held may be
  kCsvSpelling = kCsvWhole | kCsvHeld | kCsvMayHold,

  kCsvAll = kCsvTypes | kCsvSpelling
};

// Longer texts are not looked at: they are text.
inline constexpr std::size_t kCsvLongestOther = 256;

// The kinds that the text fits, exactly as the reader of the file will take them later. Blanks
// around a number do not count.
unsigned CsvKindsOf(std::string_view text);

// What a column whose texts have these kinds in common is read as. An order settles it where they
// are several.
std::shared_ptr<arrow::DataType> CsvTypeOf(unsigned kinds);

// True where the double that a number is read as, written with as many digits, is the number again:
// false for 007, 1e400 and 0.12345678901234567890. The texts of infinity and NaN are held.
bool CsvHoldsDigits(std::string_view number);

// True for a whole number beyond 2^53, so that a double may not hold its last digits.
bool CsvLosesDigits(std::string_view number);

// True for a number without a fraction.
bool CsvIsWhole(std::string_view number);

}  // namespace MCHost
