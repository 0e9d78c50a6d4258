#include "host/arrow/CsvSniffer.h"

#include <arrow/io/interfaces.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/CsvHeader.h"
#include "host/arrow/CsvMarks.h"
#include "host/arrow/CsvSample.h"
#include "host/session/HostIOError.h"
#include "host/text/Utf8.h"

namespace MCHost {

namespace {

constexpr std::size_t kSampleBytes = std::size_t{1} << 18;
constexpr std::size_t kMostSampleBytes = std::size_t{1} << 24;  // of rows that are very long
constexpr std::size_t kLonger = 8;  // times as much is read where that is too little
constexpr std::ptrdiff_t kFewLines = 3;
constexpr std::size_t kFewQuotes = 2;

struct Named {
  char fMark;
  const char* fName;
};
constexpr Named kDelimiters[] = {
    {',', "commas"}, {';', "semicolons"}, {'\t', "tabs"}, {'|', "vertical bars"}};
constexpr Named kThousands[] = {
    {',', "commas"}, {'.', "points"}, {'\'', "apostrophes"}, {'_', "underscores"}, {' ', "blanks"}};

template <std::size_t kCount>
std::string NameOf(const Named (&names)[kCount], char mark) {
  const auto* found = std::find_if(std::begin(names), std::end(names),
                                   [mark](const Named& one) { return one.fMark == mark; });
  return found == std::end(names) ? std::string(1, mark) : found->fName;
}

// Without the bytes of a last character that is cut.
std::string_view WholeCharacters(std::string_view text) {
  for (std::size_t n = 1; n <= std::min<std::size_t>(3, text.size()); ++n) {
    const auto byte = static_cast<unsigned char>(text[text.size() - n]);
    if (byte >= 0xC0) return text.substr(0, text.size() - n);
    if (byte < 0x80) break;
  }
  return text;
}

// Whether bytes that are not UTF-8 throughout are letters of Windows-1252: no control codes are
// among them, and hardly a beginning of a character of UTF-8.
bool IsWindows1252(std::string_view text) {
  constexpr std::string_view kNotThere = "\x81\x8D\x8F\x90\x9D\xFF";
  constexpr std::size_t kFewOfLetters = 20;
  std::size_t letters = 0;
  std::size_t begun = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool isBlank = byte == '\t' || byte == '\n' || byte == '\r';
    if ((byte < 0x20 && !isBlank) || kNotThere.find(text[at]) != std::string_view::npos) {
      return false;
    }
    if (byte >= 0x80) ++letters;
    const bool isEnd = at + 1 == text.size();
    if (byte >= 0xC2 && (isEnd || (static_cast<unsigned char>(text[at + 1]) & 0xC0U) == 0x80)) {
      ++begun;
    }
  }
  return begun * kFewOfLetters <= letters;
}

class Sniffer {
 public:
  Sniffer(TextBytes& bytes, const ReadingOptions& said, CsvRules& rules)
      : fBytes(bytes), fSaid(said), fRules(rules), fNamed(rules.fDelimiter) {}

  void Run() {
    CheckSaid();
    ReadStart(kSampleBytes);
    const auto isEnd = [](char c) { return c == '\n' || c == '\r'; };
    for (std::size_t size = kSampleBytes; size < kMostSampleBytes && !fbWhole;) {
      if (std::count_if(fText.begin(), fText.end(), isEnd) >= kFewLines) break;
      ReadStart(size *= kLonger);
    }
    CsvSample sample = FindLayout();
    EmptyNulls(sample);
    fRules.fDelimiter = sample.Delimiter();
    fRules.fQuote = sample.Quote();
    const CsvHeader header = HeaderOf(sample);
    fRules.fbHeader = fSaid.fbHeader.value_or(header != CsvHeader::kData);
    const CsvMarks marks = MarksOf(sample, fRules.fbHeader ? 1 : 0, fSaid);
    fRules.fNumbers = marks.fNumbers;
    AddNotes(sample.Rows().empty() ? std::vector<std::string>() : sample.Rows()[0], header, marks);
  }

 private:
  void CheckSaid() const;
  void ReadStart(std::size_t size);
  TextEncoding EncodingOf(std::string_view start) const;
  CsvSample Try(char delimiter, char quote) const;
  void EmptyNulls(CsvSample& sample) const;
  CsvSample FindLayout() const;
  CsvSample FindDelimiter(char quote) const;
  void AddNotes(const std::vector<std::string>& names, CsvHeader header, const CsvMarks& marks);
  std::string Findings() const;

  TextBytes& fBytes;
  const ReadingOptions& fSaid;
  CsvRules& fRules;
  char fNamed;  // the delimiter that the name promises
  std::string fText;
  bool fbWhole = false;
};

void Sniffer::CheckSaid() const {
  const auto refuse = [this](const char* reason) { throw HostIOError(fBytes.Name(), "", reason); };
  const char decimal = fSaid.fDecimal.value_or('.');
  if (fSaid.fThousands == decimal) {
    refuse("--decimal and --thousands cannot be the same mark; say the other one, too");
  }
  if (fSaid.fDelimiter && fSaid.fDelimiter == fSaid.fQuote.value_or('"')) {
    refuse("--delimiter and --quote cannot be the same character");
  }
}

void Sniffer::ReadStart(std::size_t size) {
  fText = fBytes.Start(size);
  fbWhole = fText.size() < size;
  fBytes.SetEncoding(fSaid.fEncoding.value_or(EncodingOf(fText)));
  if (fBytes.Encoding() == TextEncoding::kUtf8) return;
  const auto wanted = static_cast<std::int64_t>(size);
  fText.resize(size);
  const std::int64_t n = Value(fBytes.Open()->Read(wanted, fText.data()), fBytes.Name());
  fText.resize(static_cast<std::size_t>(n));
  fbWhole = n < wanted;
}

TextEncoding Sniffer::EncodingOf(std::string_view start) const {
  if (start.starts_with("\xFF\xFE")) return TextEncoding::kUtf16LittleEndian;
  if (start.starts_with("\xFE\xFF")) return TextEncoding::kUtf16BigEndian;
  if (IsUtf8(fbWhole ? start : WholeCharacters(start))) return TextEncoding::kUtf8;
  return IsWindows1252(start) ? TextEncoding::kWindows1252 : TextEncoding::kUtf8;
}

bool IsTypedBelow(const CsvSample& sample) {
  for (std::size_t i = 1; i < sample.Rows().size(); ++i) {
    const auto& row = sample.Rows()[i];
    if (!std::all_of(row.begin(), row.end(), IsTypedCell)) return false;
  }
  return true;
}

CsvSample Sniffer::Try(char delimiter, char quote) const {
  CsvSample sample(fText, fbWhole, delimiter, quote);
  sample.Empty(fRules.fNullTokens);
  return sample;
}

// The texts that stand for no value in one column.
void Sniffer::EmptyNulls(CsvSample& sample) const {
  for (std::size_t j = 0; j < sample.Width(); ++j) {
    for (const std::string& name : {sample.Rows()[0][j], "column" + std::to_string(j + 1)}) {
      const auto nulls = fRules.fColumnNulls.find(name);
      if (nulls != fRules.fColumnNulls.end()) sample.Empty(nulls->second, j);
    }
  }
}

// What the name promises, where it makes a table, unless another delimiter makes one whose cells
// are all of types (1,5;2,5); else what makes the widest table.
CsvSample Sniffer::FindDelimiter(char quote) const {
  CsvSample named = Try(fSaid.fDelimiter.value_or(fNamed), quote);
  if (fSaid.fDelimiter) return named;
  const bool isNamed = named.IsTable();
  if (isNamed && IsTypedBelow(named)) return named;
  std::optional<CsvSample> best;
  for (const Named& other : kDelimiters) {
    if (other.fMark == fNamed) continue;
    CsvSample sample = Try(other.fMark, quote);
    if (!sample.IsTable() || sample.Rows().size() < 2) continue;
    if (isNamed && !(sample.IsExact() && IsTypedBelow(sample))) continue;
    if (!best || sample.Width() > best->Width()) best = std::move(sample);
  }
  return best ? std::move(*best) : std::move(named);
}

// Whether all cells of some column, below the first row, begin with the quote.
bool HasQuotedColumn(const CsvSample& sample, std::string_view text) {
  const CsvSample bare(text, true, sample.Delimiter(), kNoMark);
  for (std::size_t j = 0; j < bare.Width(); ++j) {
    std::size_t quoted = 0;
    std::size_t others = 0;
    for (std::size_t i = 1; i < bare.Rows().size(); ++i) {
      const auto& row = bare.Rows()[i];
      if (j >= row.size() || row[j].empty()) continue;
      row[j][0] == sample.Quote() ? ++quoted : ++others;
    }
    if (quoted > 0 && others == 0) return true;
  }
  return false;
}

CsvSample Sniffer::FindLayout() const {
  CsvSample usual = FindDelimiter(fSaid.fQuote.value_or('"'));
  if (fSaid.fQuote || usual.QuotedCount() > 0) return usual;
  CsvSample single = FindDelimiter('\'');
  const bool isBetter = single.IsExact() && single.QuotedCount() >= kFewQuotes &&
                        single.Rows().size() > 1 && HasQuotedColumn(single, fText);
  return isBetter ? single : usual;
}

// What was found and not said, with the options that say otherwise.
std::string Sniffer::Findings() const {
  std::string found;
  std::string options;
  const auto add = [&](bool isFound, const std::string& what, const char* option) {
    if (!isFound) return;
    found += (found.empty() ? "" : ", ") + what;
    options += (options.empty() ? "" : ", ") + std::string(option);
  };
  const CsvNumbers& numbers = fRules.fNumbers;
  add(!fSaid.fDelimiter && fRules.fDelimiter != fNamed,
      "separated by " + NameOf(kDelimiters, fRules.fDelimiter), "--delimiter");
  add(!fSaid.fQuote && fRules.fQuote != '"', "quoted with '", "--quote");
  add(!fSaid.fDecimal && numbers.fDecimal != '.', "with decimal commas", "--decimal");
  add(!fSaid.fThousands && numbers.fThousands != kNoMark,
      "with " + NameOf(kThousands, numbers.fThousands) + " between thousands", "--thousands");
  add(!fSaid.fbHeader && !fRules.fbHeader, "without a header (column1, column2, ...)", "--header");
  const TextEncoding encoding = fBytes.Encoding();
  add(!fSaid.fEncoding && encoding != TextEncoding::kUtf8,
      encoding == TextEncoding::kWindows1252 ? "in Windows-1252" : "in UTF-16", "--encoding");
  if (found.empty()) return "";
  return "The text is taken as " + found + "; " + options + " can say otherwise.";
}

void Sniffer::AddNotes(const std::vector<std::string>& names, CsvHeader header,
                       const CsvMarks& marks) {
  if (std::string found = Findings(); !found.empty()) fRules.fNotes.push_back(std::move(found));
  std::string unnamed;
  for (std::size_t j = 0; fRules.fbHeader && j < names.size(); ++j) {
    if (!names[j].empty()) continue;
    unnamed += (unnamed.empty() ? "" : ", ") + ("column" + std::to_string(j + 1));
  }
  if (!unnamed.empty()) {
    fRules.fNotes.push_back("What has no name in the first row is called " + unnamed + ".");
  }
  if (!fSaid.fbHeader && header == CsvHeader::kPerhapsNames) {
    fRules.fNotes.push_back(
        "The first row, of numbers, is taken as the names; --no-header takes it as data.");
  }
  if (!marks.fUnsure.empty()) {
    fRules.fNotes.push_back("Numbers such as \"" + marks.fUnsure +
                            "\" are taken as texts; --decimal , or --thousands , says what the "
                            "comma is.");
  }
}

}  // namespace

void SniffCsv(TextBytes& bytes, const ReadingOptions& said, CsvRules& rules) {
  Sniffer(bytes, said, rules).Run();
}

}  // namespace MCHost
