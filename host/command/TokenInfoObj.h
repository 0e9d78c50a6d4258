// One token of a command: what it is, what it says, and where it stands in the user's text.
#pragma once

#include <cstddef>
#include <string>

struct TokenInfoObj {
  enum Type {
    kEnd,         // behind the last token
    kWord,        // a name or keyword as it stands
    kQuotedName,  // "…", never read as a keyword
    kString,      // '…'
    kNumber,
    kSlash,
    kEquals,
    kLeftParen,
    kRightParen,
    kColon,
    kMacro,       // !name that was not expanded; the text is the name
    kEmptyMacro,  // !name whose macro holds no names
    kOther        // a character that starts no token
  };
  enum Problem { kNone, kUnbalancedQuote, kNumberRange, kUnknownMacro };

  Type fType = kEnd;
  Problem fProblem = kNone;  // why the token can not be used
  std::string fText;         // without quotes; of a number, the user's own digits
  double fNumber = 0.0;      // of kNumber; finite
  std::size_t fOffset = 0;   // bytes from the start of the command text
  int fLine = 1;             // in the text the command was taken from, from 1
  int fColumn = 1;           // characters, from 1

  // True for an unquoted word that equals `keyword` without regard to case.
  bool IsWord(const std::string& keyword) const;

  // True for a token that can name a variable: a word, or a name in double quotes.
  bool IsName() const { return fType == kWord || fType == kQuotedName; }

  // The token as a message shows it, with quotes.
  std::string Described() const;

  // True when `text`, unquoted, is read as one word.
  static bool IsPlainWord(const std::string& text);
};
