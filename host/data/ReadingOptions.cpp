#include "host/data/ReadingOptions.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/data/MissingValueCode.h"

namespace MCHost {

namespace {

template <class Value, std::size_t kCount>
using Words = std::array<std::pair<const char*, Value>, kCount>;

template <class Value, std::size_t kCount>
bool Choose(const Words<Value, kCount>& words, const std::string& word,
            std::optional<Value>& value) {
  for (const auto& [known, meant] : words) {
    if (word == known) value = meant;
  }
  return std::any_of(words.begin(), words.end(),
                     [&word](const auto& one) { return word == one.first; });
}

constexpr Words<TextEncoding, 7> kEncodings = {{{"utf-8", TextEncoding::kUtf8},
                                                {"utf8", TextEncoding::kUtf8},
                                                {"utf-16le", TextEncoding::kUtf16LittleEndian},
                                                {"utf-16be", TextEncoding::kUtf16BigEndian},
                                                {"latin1", TextEncoding::kWindows1252},
                                                {"iso-8859-1", TextEncoding::kWindows1252},
                                                {"windows-1252", TextEncoding::kWindows1252}}};
constexpr Words<char, 4> kDelimiters = {
    {{"tab", '\t'}, {"\\t", '\t'}, {"space", ' '}, {"none", '\x1F'}}};
constexpr Words<char, 1> kQuotes = {{{"none", kNoMark}}};
constexpr Words<char, 2> kDecimals = {{{".", '.'}, {",", ','}}};
constexpr Words<char, 7> kThousands = {{{",", ','},
                                        {".", '.'},
                                        {"'", '\''},
                                        {"_", '_'},
                                        {" ", kAnySpace},
                                        {"space", kAnySpace},
                                        {"none", kNoMark}}};

bool IsMark(const std::string& word) {
  const auto c = static_cast<unsigned char>(word[0]);
  return word.size() == 1 && c < 0x80 && (c >= ' ' || c == '\t') && c != 0x7F;
}

// A character that stands for itself, or one of a few words.
template <std::size_t kCount>
bool TakeMark(const Words<char, kCount>& words, const std::string& word,
              std::optional<char>& mark) {
  if (Choose(words, word, mark)) return true;
  if (word.empty() || !IsMark(word)) return false;
  mark = word[0];
  return true;
}

// An option that takes any word but none at all.
template <std::string ReadingOptions::*kMember>
bool TakeWord(ReadingOptions& options, const std::string& word) {
  options.*kMember = word;
  return !word.empty();
}

bool TakeMissing(ReadingOptions& options, const std::string& word) {
  std::optional<MissingCodes> codes = ParseMissingCodes(word);
  if (codes && std::any_of(codes->fCodes.begin(), codes->fCodes.end(), IsRangeBackwards)) {
    return false;
  }
  if (codes) options.fMissing.push_back(std::move(*codes));
  return codes.has_value();
}

}  // namespace

const std::vector<ReadingOption>& AllReadingOptions() {
  using Options = ReadingOptions;
  using Word = const std::string&;
  static const std::vector<ReadingOption> kOptions = {
      {"input-format", "FORMAT",
       "Format of the data, whatever the file is called: csv, tsv, parquet, arrow, feather, jsonl, "
       "json, xlsx, ods",
       false, TakeWord<&Options::fFormat>, "is no format"},
      {"sheet", "NAME", "Sheet of a workbook (default: the first)", false,
       TakeWord<&Options::fSheet>, "is no sheet"},
      {"query", "SQL", "What to read of a database, instead of the ?table=NAME of its address",
       false, TakeWord<&Options::fQuery>, "is no query"},
      {"driver", "PLACE",
       "Where the ADBC driver of a database is: its file, its folder or a Python environment "
       "(default: PREDSELECT_DRIVER, the environment at work, the system)",
       false, TakeWord<&Options::fDriver>, "is no place"},
      {"delimiter", "CHAR",
       "What separates the columns of a text: a character, tab, space or none (default: as the "
       "file looks)",
       false, [](Options& o, Word word) { return TakeMark(kDelimiters, word, o.fDelimiter); },
       "is no single character, nor tab, space or none"},
      {"quote", "CHAR", "What texts are quoted with: a character, or none (default: \")", false,
       [](Options& o, Word word) { return TakeMark(kQuotes, word, o.fQuote); },
       "is no single character, nor none"},
      {"decimal", "CHAR",
       "The decimal mark of numbers in a text: . or , (default: as the file looks)", false,
       [](Options& o, Word word) { return Choose(kDecimals, word, o.fDecimal); },
       "is neither . nor ,"},
      {"thousands", "CHAR", "What groups the digits of numbers in a text: , . ' _ space or none",
       false, [](Options& o, Word word) { return Choose(kThousands, word, o.fThousands); },
       "is none of , . ' _ space none"},
      {"header", "", "The first row of a text holds the names, even if it does not look so", false,
       [](Options& o, Word) {
         o.fbHeader = true;
         return true;
       },
       ""},
      {"no-header", "", "The first row of a text is data; the columns are called column1, ...",
       false,
       [](Options& o, Word) {
         o.fbHeader = false;
         return true;
       },
       ""},
      {"encoding", "NAME", "utf-8, utf-16le, utf-16be, latin1 or windows-1252, of a text", false,
       [](Options& o, Word word) { return Choose(kEncodings, word, o.fEncoding); },
       "is none of utf-8, utf-16le, utf-16be, latin1, windows-1252"},
      {"no-null-words", "", "NA, NULL, None and the like are texts; only nothing means null", false,
       [](Options& o, Word) {
         o.fbNullWords = false;
         return true;
       },
       ""},
      {"missing", "VAR=CODE,...",
       "Values of a variable, or of all (*), that mean missing: numbers, texts, low..high", true,
       TakeMissing,
       "is not VARIABLE=CODE,CODE..., with * for all variables and ranges as low..high"}};
  return kOptions;
}

std::string SetReadingOption(ReadingOptions& options, const std::string& name,
                             const std::string& word) {
  for (const ReadingOption& option : AllReadingOptions()) {
    if (name != option.fName) continue;
    return option.fTake(options, word) ? "" : "\"" + word + "\" " + option.fAllowed;
  }
  return "there is no option \"" + name + "\"";
}

std::optional<MissingCodes> ParseMissingCodes(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == 0 || equals == std::string::npos) return std::nullopt;
  MissingCodes codes{text.substr(0, equals), {""}};
  for (std::size_t at = equals + 1; at < text.size(); ++at) {
    if (text[at] != ',') {
      codes.fCodes.back() += text[at];
    } else if (text.compare(at, 2, ",,") == 0) {
      codes.fCodes.back() += text[at++];
    } else {
      codes.fCodes.emplace_back();
    }
  }
  return codes;
}

}  // namespace MCHost
