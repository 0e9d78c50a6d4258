// How data are to be read where a file itself does not tell it, or is to be taken otherwise than it
// looks. One plain struct for every way in; what nobody says is found from the file.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace MCHost {

// kAnySpace among the thousands marks: a blank, a no-break space, a narrow one.
inline constexpr char kNoMark = '\0';
inline constexpr char kAnySpace = ' ';

enum class TextEncoding { kUtf8, kUtf16LittleEndian, kUtf16BigEndian, kWindows1252 };

// Codes that mean that a value is missing: numbers in a numeric column, texts in one of texts.
struct MissingCodes {
  std::string fVariable;  // "*" for all
  std::vector<std::string> fCodes;
};

struct ReadingOptions {
  std::string fFormat;                    // "csv", "parquet", ...; empty: the file's extension says
  std::optional<char> fDelimiter;         // of delimited text, as all to fbNullWords
  std::optional<char> fQuote;             // kNoMark: a quote is a letter like others
  std::optional<char> fDecimal;           // '.' or ','
  std::optional<char> fThousands;         // kNoMark for none
  std::optional<bool> fbHeader;           // whether the first row holds the names
  std::optional<TextEncoding> fEncoding;  // also of other formats of text
  bool fbNullWords = true;                // the words of NullWords.h are no values
  std::vector<MissingCodes> fMissing;     // of every format
  std::string fSheet;                     // of a workbook; empty for the first
  std::string fQuery;                     // to a database, instead of the table of its address
  std::string fDriver;                    // of a database: a library, a folder, an environment
};

// One option of reading: the same names and words for the command line and any other caller.
struct ReadingOption {
  const char* fName;   // "delimiter"
  const char* fWords;  // what it takes: "CHAR"; empty where it takes nothing
  const char* fHelp;
  bool fbRepeated;
  // False where the option does not take the word.
  std::function<bool(ReadingOptions&, const std::string&)> fTake;
  const char* fAllowed;  // "is no single character, nor tab, space or none"
};

const std::vector<ReadingOption>& AllReadingOptions();

// Sets the option of a name. Empty where that is done, else why not.
std::string SetReadingOption(ReadingOptions& options, const std::string& name,
                             const std::string& word);

// "variable=code,code"; empty where there is no such form. A comma in a code is doubled.
std::optional<MissingCodes> ParseMissingCodes(const std::string& text);

}  // namespace MCHost
