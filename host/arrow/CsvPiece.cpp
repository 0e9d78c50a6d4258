#include "host/arrow/CsvPiece.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string>

#include "host/arrow/CsvKinds.h"
#include "host/text/Utf8.h"

namespace MCHost {

namespace {

// Whether bytes stand in the piece that are not of ASCII.
bool HasHighByte(std::string_view piece) {
  unsigned char all = 0;
  for (const char c : piece) all |= static_cast<unsigned char>(c);
  return all >= 0x80;
}

// Whether a field may be a number and too long for one: a run of what numbers and the blanks around
// them are made of, as such a field holds one wherever it begins.
bool HasLongNumber(std::string_view piece, const CsvLook& look) {
  constexpr std::size_t kRun = kCsvLongestOther / 2;
  const std::string ofNumbers = std::string("0123456789+-.eE \t\"") + look.fQuote + look.fDecimal;
  std::array<bool, 256> isOther;
  isOther.fill(true);
  for (const char c : ofNumbers) isOther[static_cast<unsigned char>(c)] = c == look.fDelimiter;
  const auto ends = [&isOther](char c) { return isOther[static_cast<unsigned char>(c)]; };
  for (std::size_t start = 0; start + kRun <= piece.size(); start += kRun) {
    const std::string_view run = piece.substr(start, kRun);
    if (std::none_of(run.begin(), run.end(), ends)) return true;
  }
  return false;
}

// "nan(...)" is a number, whatever stands between the parentheses.
bool HasNamedNan(std::string_view piece) {
  const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
  for (std::size_t at = piece.find('('); at != std::string_view::npos;
       at = piece.find('(', at + 1)) {
    if (at >= 2 && lower(piece[at - 1]) == 'n' && lower(piece[at - 2]) == 'a') return true;
  }
  return false;
}

// Whether every field that a quote opens is closed in its line, and by its end.
bool AreQuotesPlain(std::string_view piece, const CsvLook& look) {
  const char quote = look.fQuote;
  const auto isEnd = [&look](char c) { return c == look.fDelimiter || c == '\n' || c == '\r'; };
  std::size_t open = piece.find(quote);
  while (open != std::string_view::npos) {
    if (open > 0 && !isEnd(piece[open - 1])) {  // a quote within a field
      open = piece.find(quote, open + 1);
      continue;
    }
    std::size_t close = piece.find(quote, open + 1);
    while (close != std::string_view::npos && close + 1 < piece.size() &&
           piece[close + 1] == quote) {
      close = piece.find(quote, close + 2);
    }
    if (close == std::string_view::npos) return false;
    if (close + 1 < piece.size() && !isEnd(piece[close + 1])) return false;
    const std::string_view text = piece.substr(open, close - open);
    if (std::any_of(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; })) {
      return false;
    }
    open = piece.find(quote, close + 1);
  }
  return true;
}

}  // namespace

bool IsPlainCsvPiece(std::string_view piece, const CsvLook& look) {
  if (piece.find('\0') != std::string_view::npos) return false;
  if (HasHighByte(piece) && !IsUtf8(piece)) return false;
  return !HasLongNumber(piece, look) && !HasNamedNan(piece) && AreQuotesPlain(piece, look);
}

}  // namespace MCHost
