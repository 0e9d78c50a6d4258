// Looks once over the bytes of a CSV file: is it sound, and what do its columns hold.
//
// It checks that the text is UTF-8, that quotes are balanced, that names are there and unique, and
// that every row has as many fields as the header, and says where it is not so. It never keeps more
// of the file than a field, and bytes may come in pieces of any size. What a column holds is
// settled by all its values, not by the first of them.
//
// The rules are those of RFC 4180, with any of CR, LF and CRLF as the end of a line, blank lines
// skipped, and a quote inside an unquoted field taken as it is. Delimiter, quote, the marks of
// numbers and whether there is a header are the caller's to say.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "host/arrow/CsvKinds.h"
#include "host/arrow/CsvNumbers.h"
#include "host/arrow/NearlyNumbers.h"
#include "host/data/FieldType.h"

namespace MCHost {

struct CsvRules {
  char fDelimiter = ',';
  std::vector<std::string> fNullTokens;     // the texts that stand for no value, quoted or not
  std::map<std::string, FieldType> fTypes;  // declared types by column name
  char fQuote = '"';                        // kNoMark for none
  CsvNumbers fNumbers{};
  bool fbHeader = true;  // else the first row is a case, and columns are column1, column2, ...
  std::map<std::string, std::vector<std::string>> fColumnNulls{};  // further texts, by column name
  std::vector<std::string> fNotes{};  // what was found of all this, where nobody said it
};

// What has been seen of one column.
struct CsvColumn {
  std::string fName;
  bool fbNamed = true;  // else the name is ours
  FieldType fDeclared = FieldType::kAny;
  unsigned fKinds = kCsvAll;
  bool fbDigitsLost = false;
  bool fbGrouped = false;           // a number of it has thousands marks
  std::vector<std::string> fNulls;  // further texts that stand for no value
  NearlyNumbers fNearly;

  bool IsNumber() const { return (fKinds & kCsvTypes) == kCsvNumber; }
  // Whether further cells can tell anything of it.
  bool IsWatched() const {
    return fKinds != kCsvText || (fDeclared == FieldType::kAny && fNearly.IsOpen());
  }
};

class CsvInspector {
 public:
  // `source` names the file in messages. The rules are borrowed.
  CsvInspector(std::string source, const CsvRules& rules);

  // Takes the next bytes of the file. Throws HostIOError with line and column.
  void Feed(const char* data, std::size_t size);

  // Takes the end of the file. Throws HostIOError.
  void Finish();

  // What was found. REQUIRES: Finish() has returned.
  const std::vector<CsvColumn>& Columns() const { return fColumns; }
  std::int64_t CaseCount() const { return fNRows - (fpRules->fbHeader ? 1 : 0); }
  bool HasQuotedNewlines() const { return fbQuotedNewlines; }
  std::int64_t LongestRow() const { return fLongestRow; }  // in bytes

 private:
  enum State { kRowStart, kFieldStart, kPlain, kQuoted, kQuoteSeen };
  enum ByteClass : std::uint8_t { kOrdinary, kQuote, kHigh, kDelimiter, kNewline, kForbidden };

  // A place in the file, as an editor counts: lines from 1, characters of the line from 1.
  struct Mark {
    std::int64_t fLine = 1;
    std::int64_t fColumn = 1;
  };

  void Scan(const char* data, std::size_t size);
  const char* SkipByteOrderMark(const char* at, const char* end);
  const char* Step(const char* at, const char* end);
  const char* StartField(const char* at);
  const char* ReadPlain(const char* at, const char* end);
  const char* ReadQuoted(const char* at, const char* end);
  const char* AfterQuote(const char* at);
  const char* EndFieldAt(const char* at, std::string_view text);
  void Keep(const char* from, const char* to);
  void CheckUtf8(const char* at);
  void CountLine(const char* at);
  ByteClass ClassOf(char byte) const { return fClasses[static_cast<std::uint8_t>(byte)]; }

  void EndField(std::string_view text);
  void EndRow(const Mark& end);
  void AddName(std::string_view name);
  void AddColumn(std::string name);
  const char* NamesRow() const { return fpRules->fbHeader ? "header" : "first row"; }
  void Observe(CsvColumn& column, std::string_view text);
  unsigned KindsOf(std::string_view& text, bool& isGrouped);
  bool IsNull(const CsvColumn& column, std::string_view text) const;

  std::int64_t Position(const char* at) const { return fOffset + (at - fpChunk); }
  Mark MarkOf(const char* at) const;
  [[noreturn]] void Fail(const Mark& mark, const std::string& reason) const;

  std::string fSource;
  const CsvRules* fpRules;
  std::array<ByteClass, 256> fClasses{};
  std::array<bool, 256> fStartsNull{};  // first bytes of the null tokens

  std::string fHead;  // the first bytes of the file, until they could be a byte order mark
  State fState = kRowStart;
  const char* fpChunk = nullptr;
  std::int64_t fOffset = 0;  // of the chunk in the file
  std::string fNumber;       // the field as a plain number
  std::string fText;         // the field as far as it does not lie in the chunk as it is
  Mark fFieldMark;           // where the field starts
  std::size_t fNFields = 0;  // finished fields of the row

  int fUtf8Left = 0;  // bytes still to come of a character, and the bounds of the next of them
  std::uint8_t fUtf8Low = 0x80;
  std::uint8_t fUtf8High = 0xBF;

  std::int64_t fLine = 1;
  std::int64_t fLineStart = 0;
  std::int64_t fContinuation = 0;  // bytes of the line that do not start a character
  std::int64_t fReturnAt = -1;     // position of the last CR
  std::int64_t fRowStart = 0;
  std::int64_t fNRows = 0;  // the header included
  std::int64_t fLongestRow = 0;
  bool fbQuotedNewlines = false;
  std::vector<CsvColumn> fColumns;
  std::unordered_set<std::string> fNames;  // of the header, until it ends
};

}  // namespace MCHost
