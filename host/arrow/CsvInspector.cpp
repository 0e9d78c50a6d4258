#include "host/arrow/CsvInspector.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// A text longer than this is text, and its end need not be kept.
constexpr std::size_t kLongText = 1024;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// What mends it, behind what is wrong.
constexpr char kOneColumn[] = "; --delimiter none takes each line as one text";
constexpr char kNotUtf8[] =
    "the text is not valid UTF-8; --encoding latin1 reads Latin-1 and Windows-1252";
constexpr char kZeroByte[] =
    "a zero byte is not text; --encoding utf-16le or utf-16be reads UTF-16 without a mark";

std::string Count(std::size_t n, const char* noun) {
  return std::to_string(n) + " " + noun + (n == 1 ? "" : "s");
}

}  // namespace

CsvInspector::CsvInspector(std::string source, const CsvRules& rules)
    : fSource(std::move(source)), fpRules(&rules) {
  std::fill(fClasses.begin() + 128, fClasses.end(), kHigh);
  if (rules.fQuote != kNoMark) fClasses[static_cast<std::uint8_t>(rules.fQuote)] = kQuote;
  fClasses['\n'] = fClasses['\r'] = kNewline;
  fClasses[0] = kForbidden;
  fClasses[static_cast<std::uint8_t>(rules.fDelimiter)] = kDelimiter;
  for (const std::string& token : rules.fNullTokens) {
    if (!token.empty()) fStartsNull[static_cast<std::uint8_t>(token[0])] = true;
  }
}

void CsvInspector::Feed(const char* data, std::size_t size) {
  if (fHead.size() < kByteOrderMark.size()) {
    const std::size_t taken = std::min(size, kByteOrderMark.size() - fHead.size());
    fHead.append(data, taken);
    if (fHead.size() < kByteOrderMark.size()) return;
    Scan(fHead.data(), fHead.size());
    data += taken;
    size -= taken;
  }
  Scan(data, size);
}

void CsvInspector::Scan(const char* data, std::size_t size) {
  fpChunk = data;
  const char* const end = data + size;
  const char* at = fOffset == 0 ? SkipByteOrderMark(data, end) : data;
  while (at != end) at = Step(at, end);
  fOffset += static_cast<std::int64_t>(size);
}

const char* CsvInspector::SkipByteOrderMark(const char* at, const char* end) {
  if (std::string_view(at, static_cast<std::size_t>(end - at)).substr(0, 3) != kByteOrderMark) {
    return at;
  }
  fLineStart = fRowStart = static_cast<std::int64_t>(kByteOrderMark.size());
  return at + kByteOrderMark.size();
}

const char* CsvInspector::Step(const char* at, const char* end) {
  switch (fState) {
    case kRowStart:
      if (ClassOf(*at) == kNewline) {  // a blank line, or the second half of CRLF
        CountLine(at);
        return at + 1;
      }
      fRowStart = Position(at);
      return StartField(at);
    case kFieldStart:
      return StartField(at);
    case kPlain:
      return ReadPlain(at, end);
    case kQuoted:
      return ReadQuoted(at, end);
    case kQuoteSeen:
      return AfterQuote(at);
  }
  return end;
}

const char* CsvInspector::StartField(const char* at) {
  fText.clear();
  fFieldMark = MarkOf(at);
  const bool quoted = ClassOf(*at) == kQuote;
  fState = quoted ? kQuoted : kPlain;
  return quoted ? at + 1 : at;
}

const char* CsvInspector::ReadPlain(const char* at, const char* end) {
  const char* const start = at;
  while (true) {
    if (fUtf8Left == 0) {
      while (at != end && ClassOf(*at) <= kQuote) ++at;
    }
    if (at == end) {
      Keep(start, end);
      return end;
    }
    if (fUtf8Left == 0 && ClassOf(*at) != kHigh) break;
    CheckUtf8(at++);
  }
  if (fText.empty()) return EndFieldAt(at, {start, static_cast<std::size_t>(at - start)});
  Keep(start, at);
  return EndFieldAt(at, fText);
}

const char* CsvInspector::ReadQuoted(const char* at, const char* end) {
  const char* const start = at;
  for (; at != end; ++at) {
    const ByteClass kind = ClassOf(*at);
    if (fUtf8Left > 0 || kind == kHigh || kind == kForbidden) {
      CheckUtf8(at);
    } else if (kind == kNewline) {
      fbQuotedNewlines = true;
      CountLine(at);
    } else if (kind == kQuote) {
      Keep(start, at);
      fState = kQuoteSeen;
      return at + 1;
    }
  }
  Keep(start, end);
  return end;
}

const char* CsvInspector::AfterQuote(const char* at) {
  const ByteClass kind = ClassOf(*at);
  if (kind == kQuote) {
    Keep(at, at + 1);
    fState = kQuoted;
    return at + 1;
  }
  if (kind != kDelimiter && kind != kNewline) {
    Fail(MarkOf(at),
         "only a delimiter or the end of the line may follow a closing quote; --quote none takes "
         "quotes as letters");
  }
  return EndFieldAt(at, fText);
}

// Ends the field, and the row where a line ends. `at` is the delimiter or the end of the line.
const char* CsvInspector::EndFieldAt(const char* at, std::string_view text) {
  if (ClassOf(*at) == kForbidden) CheckUtf8(at);
  EndField(text);
  fState = kFieldStart;
  if (ClassOf(*at) == kDelimiter) return at + 1;
  fLongestRow = std::max(fLongestRow, Position(at) - fRowStart);
  EndRow(MarkOf(at));
  CountLine(at);
  return at + 1;
}

void CsvInspector::Finish() {
  if (fHead.size() < kByteOrderMark.size()) Scan(fHead.data(), fHead.size());
  if (fUtf8Left > 0) Fail(fFieldMark, "the text ends within a character");
  if (fState == kQuoted) Fail(fFieldMark, "the quote that opens here is never closed");
  if (fState != kRowStart) {
    const Mark end{fLine, fOffset - fLineStart - fContinuation + 1};
    if (fState == kFieldStart) fText.clear();
    EndField(fText);
    fLongestRow = std::max(fLongestRow, fOffset - fRowStart);
    EndRow(end);
  }
  if (fNRows == 0) {
    throw HostIOError(fSource, "",
                      fOffset == 0        ? "the file is empty"
                      : fpRules->fbHeader ? "there is no header row"
                                          : "there are no rows");
  }
}

// A field that is only looked at may be kept in part; a name is kept whole.
void CsvInspector::Keep(const char* from, const char* to) {
  if (fNRows == 0 || fText.size() < kLongText) fText.append(from, to);
}

void CsvInspector::CheckUtf8(const char* at) {
  const auto byte = static_cast<std::uint8_t>(*at);
  if (byte == 0) Fail(MarkOf(at), kZeroByte);
  if (fUtf8Left > 0) {
    if (byte < fUtf8Low || byte > fUtf8High) Fail(MarkOf(at), kNotUtf8);
    ++fContinuation;
    --fUtf8Left;
    fUtf8Low = 0x80;
    fUtf8High = 0xBF;
    return;
  }
  if (byte < 0xC2 || byte > 0xF4) Fail(MarkOf(at), kNotUtf8);
  fUtf8Left = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
  // Overlong forms, surrogates and points beyond the last one are out of bounds.
  fUtf8Low = byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80;
  fUtf8High = byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF;
}

void CsvInspector::CountLine(const char* at) {
  const std::int64_t position = Position(at);
  const bool secondHalf = *at == '\n' && fReturnAt == position - 1 && position > 0;
  if (!secondHalf) ++fLine;
  if (*at == '\r') fReturnAt = position;
  fLineStart = position + 1;
  fContinuation = 0;
}

void CsvInspector::EndField(std::string_view text) {
  const std::size_t field = fNFields++;
  if (fNRows == 0 && fpRules->fbHeader) return AddName(text);
  if (fNRows == 0) AddColumn("column" + std::to_string(fNFields));
  if (field >= fColumns.size()) {
    Fail(fFieldMark, "the row has more fields than the " + std::string(NamesRow()) +
                         ", which has " + Count(fColumns.size(), "field") +
                         (fColumns.size() == 1 ? kOneColumn : ""));
  }
  if (fColumns[field].IsWatched()) Observe(fColumns[field], text);
}

void CsvInspector::EndRow(const Mark& end) {
  if (fNRows > 0 && fNFields < fColumns.size()) {
    Fail(end, "the row ends after " + Count(fNFields, "field") + "; the " + NamesRow() + " has " +
                  std::to_string(fColumns.size()));
  }
  if (fNRows == 0) std::unordered_set<std::string>().swap(fNames);
  ++fNRows;
  fNFields = 0;
  fState = kRowStart;
}

void CsvInspector::AddName(std::string_view name) {
  if (name.empty()) {
    AddName("column" + std::to_string(fNFields));
    fColumns.back().fbNamed = false;
    return;
  }
  std::string added(name);
  if (!fNames.insert(added).second) {
    Fail(fFieldMark, "a column named \"" + added + "\" is there already");
  }
  AddColumn(std::move(added));
}

void CsvInspector::AddColumn(std::string name) {
  CsvColumn column;
  column.fName = std::move(name);
  const auto nulls = fpRules->fColumnNulls.find(column.fName);
  if (nulls != fpRules->fColumnNulls.end()) column.fNulls = nulls->second;
  const auto declared = fpRules->fTypes.find(column.fName);
  if (declared != fpRules->fTypes.end()) column.fDeclared = declared->second;
  column.fKinds = DeclaredKinds(column.fDeclared);
  fColumns.push_back(std::move(column));
}

void CsvInspector::Observe(CsvColumn& column, std::string_view text) {
  if (IsNull(column, text)) return;
  const std::string_view asWritten = text;
  bool isGrouped = false;
  unsigned kinds = KindsOf(text, isGrouped);
  if (column.fDeclared == FieldType::kAny) {
    column.fNearly.Count((kinds & kCsvNumber) != 0, asWritten);
    if (column.fKinds == kCsvText) return;
  }
  const FieldType declared = column.fDeclared;
  if (declared == FieldType::kBoolean && (text == "0" || text == "1")) {
    kinds = kCsvBoolean | kCsvWhole;
  }
  if (declared == FieldType::kInteger && (kinds & kCsvNumber) && !CsvIsWhole(text)) {
    kinds = kCsvText;
  }
  column.fKinds &= kinds;
  if ((column.fKinds & kCsvTypes) == 0) column.fKinds = kCsvText;
  if (column.IsNumber() && CsvLosesDigits(text)) column.fbDigitsLost = true;
  column.fbGrouped |= isGrouped;
  if (column.fKinds != kCsvText || declared == FieldType::kAny) return;
  Fail(fFieldMark, NotAsDeclared(asWritten, declared, column.fName));
}

// The kinds of a text; one that is a number becomes what it is without marks.
unsigned CsvInspector::KindsOf(std::string_view& text, bool& isGrouped) {
  if (fpRules->fNumbers.ArePlain() || text.size() > kCsvLongestOther) return CsvKindsOf(text);
  std::optional<PlainNumber> number = PlainNumberOf(text, fpRules->fNumbers);
  const unsigned plain = number ? CsvKindsOf(number->fText) : kCsvText;
  if ((plain & kCsvNumber) == 0) {
    const unsigned kinds = CsvKindsOf(text);
    return kinds & kCsvNumber ? kCsvText : kinds;
  }
  fNumber = std::move(number->fText);
  text = fNumber;
  isGrouped = number->fbGrouped;
  return isGrouped ? plain & ~kCsvWhole : plain;  // integers are not read with marks
}

bool CsvInspector::IsNull(const CsvColumn& column, std::string_view text) const {
  if (text.empty()) return true;
  const auto& own = column.fNulls;
  if (!own.empty() && std::find(own.begin(), own.end(), text) != own.end()) return true;
  if (!fStartsNull[static_cast<std::uint8_t>(text[0])]) return false;
  const auto& tokens = fpRules->fNullTokens;
  return std::find(tokens.begin(), tokens.end(), text) != tokens.end();
}

CsvInspector::Mark CsvInspector::MarkOf(const char* at) const {
  return {fLine, Position(at) - fLineStart - fContinuation + 1};
}

void CsvInspector::Fail(const Mark& mark, const std::string& reason) const {
  throw HostIOError(
      fSource, "line " + std::to_string(mark.fLine) + ", column " + std::to_string(mark.fColumn),
      reason);
}

}  // namespace MCHost
