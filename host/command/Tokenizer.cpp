#include "host/command/Tokenizer.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

namespace MCHost {

namespace {

using Type = TokenInfoObj::Type;

constexpr std::string_view kBlanks = " \t\r\n\f\v";
constexpr std::string_view kEndsWord = " \t\r\n\f\v/=():,'\"";

Type TypeOfMark(char c) {
  switch (c) {
    case '/':
      return TokenInfoObj::kSlash;
    case '=':
      return TokenInfoObj::kEquals;
    case '(':
      return TokenInfoObj::kLeftParen;
    case ')':
      return TokenInfoObj::kRightParen;
    case ':':
      return TokenInfoObj::kColon;
    default:
      return TokenInfoObj::kOther;
  }
}

// Walks the text once, keeping line and column beside the offset.
class Reader {
 public:
  Reader(std::string_view text, int line, int column) : fText(text), fLine(line), fColumn(column) {}

  TokenInfoObj Next() {
    while (fOffset < fText.size() && IsIn(kBlanks, Current())) Advance();
    TokenInfoObj token;
    token.fOffset = fOffset;
    token.fLine = fLine;
    token.fColumn = fColumn;
    if (fOffset >= fText.size()) return token;
    const char c = Current();
    if (c == '\'' || c == '"') {
      ReadQuoted(token);
    } else if (c == '!') {
      Advance();
      token.fType = TokenInfoObj::kMacro;
      token.fText = ReadRun();
    } else if (IsIn(kEndsWord, c)) {
      token.fType = TypeOfMark(c);
      token.fText = c;
      Advance();
    } else {
      ReadWord(token);
    }
    return token;
  }

 private:
  static bool IsIn(std::string_view set, char c) { return set.find(c) != std::string_view::npos; }

  char Current() const { return fText[fOffset]; }

  void Advance() {
    const char c = fText[fOffset++];
    if (c == '\n') {
      ++fLine;
      fColumn = 1;
    } else if (fOffset >= fText.size() || (fText[fOffset] & 0xC0) != 0x80) {
      ++fColumn;  // the next byte starts a character
    }
  }

  std::string ReadRun() {
    const std::size_t start = fOffset;
    while (fOffset < fText.size() && !IsIn(kEndsWord, Current())) Advance();
    return std::string(fText.substr(start, fOffset - start));
  }

  void ReadWord(TokenInfoObj& token) {
    token.fText = ReadRun();
    bool inRange = true;
    const bool isNumber = ReadNumber(token.fText, token.fNumber, inRange);
    token.fType = isNumber ? TokenInfoObj::kNumber : TokenInfoObj::kWord;
    if (!inRange) token.fProblem = TokenInfoObj::kNumberRange;
  }

  void ReadQuoted(TokenInfoObj& token) {
    const char quote = Current();
    token.fType = quote == '"' ? TokenInfoObj::kQuotedName : TokenInfoObj::kString;
    for (Advance(); fOffset < fText.size() && Current() != '\n'; Advance()) {
      if (Current() == quote) {
        Advance();
        if (fOffset >= fText.size() || Current() != quote) return;
      }
      token.fText += Current();
    }
    token.fProblem = TokenInfoObj::kUnbalancedQuote;
  }

  std::string_view fText;
  std::size_t fOffset = 0;
  int fLine;
  int fColumn;
};

// The text before the period that ends the command, or up to its last word, so that the end is
// shown on a line that has something on it.
std::string_view WithoutEnd(std::string_view text) {
  const std::size_t last = text.find_last_not_of(kBlanks);
  if (last == std::string_view::npos) return {};
  return text.substr(0, text[last] == '.' ? last : last + 1);
}

// Digits with at most one point among them, an optional sign before and an optional exponent.
bool LooksLikeNumber(std::string_view text) {
  const auto skipDigits = [&text] {
    const std::size_t n = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(n);
    return n;
  };
  const auto skipOne = [&text](std::string_view set) {
    const bool found = !text.empty() && set.find(text.front()) != std::string_view::npos;
    if (found) text.remove_prefix(1);
    return found;
  };
  skipOne("+-");
  std::size_t digits = skipDigits();
  if (skipOne(".")) digits += skipDigits();
  if (digits == 0) return false;
  if (skipOne("eE")) {
    skipOne("+-");
    if (skipDigits() == 0) return false;
  }
  return text.empty();
}

}  // namespace

bool ReadNumber(const std::string& text, double& value, bool& inRange) {
  inRange = true;
  if (!LooksLikeNumber(text)) return false;
  const char* first = text.data() + (text.front() == '+' ? 1 : 0);
  const auto result = std::from_chars(first, text.data() + text.size(), value);
  inRange = result.ec == std::errc();
  if (!inRange) value = 0.0;
  return true;
}

std::vector<TokenInfoObj> Tokenize(const std::string& text, int line, int column) {
  Reader reader(WithoutEnd(text), line, column);
  std::vector<TokenInfoObj> tokens;
  do {
    tokens.push_back(reader.Next());
  } while (tokens.back().fType != TokenInfoObj::kEnd);
  return tokens;
}

}  // namespace MCHost
