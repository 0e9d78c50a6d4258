// How numbers are spelled in a file of text: the mark before their fraction, and what groups the
// digits before it by threes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/data/ReadingOptions.h"

namespace MCHost {

struct CsvNumbers {
  char fDecimal = '.';
  char fThousands = kNoMark;

  bool ArePlain() const { return fDecimal == '.' && fThousands == kNoMark; }
  bool operator==(const CsvNumbers&) const = default;
};

// A number as other programs spell it. A text that holds no mark is itself, number or not.
struct PlainNumber {
  std::string fText;
  bool fbGrouped = false;
};

// Nothing where marks stand as in no number. Blanks around it go.
std::optional<PlainNumber> PlainNumberOf(std::string_view text, const CsvNumbers& numbers);

// The length of the thousands mark at the start of a text, 0 where there is none.
std::size_t ThousandsMarkAt(std::string_view text, char mark);

}  // namespace MCHost
