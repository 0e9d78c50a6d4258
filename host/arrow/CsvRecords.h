// The records of a sound CSV file as they are written: the bytes of each record and of its fields,
// quotes and blanks included, and the line ends, blank lines and byte order mark between them.
//
// Put together in order, Before() and Record() of all records and the last Before() are the file.
// The file is one that CsvInspector has passed; no more of it is kept than a piece and a record.
#pragma once

#include <arrow/io/type_fwd.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace MCHost {

class CsvRecords {
 public:
  // `source` names the file in messages.
  CsvRecords(std::shared_ptr<arrow::io::InputStream> input, char delimiter, std::string source,
             char quote = '"');
  ~CsvRecords();

  const std::string& Source() const { return fSource; }
  char Delimiter() const { return fDelimiter; }

  // Goes to the next record, the header being the first; false behind the last. Views that were
  // given before are void. Throws HostIOError.
  bool Next();

  // What stands between the last record and this one, or the end.
  std::string_view Before() const { return View({fBefore, fStart}); }

  // REQUIRES of both: Next() was true, and the record has the field.
  std::string_view Record() const { return View({fStart, fEnd}); }
  std::string_view Field(std::size_t field) const { return View(fFields[field]); }
  std::size_t FieldCount() const { return fFields.size(); }

  // What a field says: without the quotes around it, quotes in it halved.
  std::string TextOf(std::string_view field) const;

 private:
  enum ByteClass : char { kOrdinary, kDelimiter, kNewline };

  struct Range {
    std::size_t fFrom;
    std::size_t fTo;
  };

  std::string_view View(Range range) const {
    return {&fBytes[range.fFrom], range.fTo - range.fFrom};
  }
  ByteClass ClassAt(std::size_t at) const {
    return fClasses[static_cast<unsigned char>(fBytes[at])];
  }
  bool SkipLineEnds();
  bool FindFields();
  bool FindFieldEnd(std::size_t& at) const;
  void ReadMore();

  std::shared_ptr<arrow::io::InputStream> fpInput;
  char fDelimiter;
  char fQuote;
  std::string fSource;
  std::array<ByteClass, 256> fClasses{};
  std::string fBytes;
  std::size_t fnBytes = 0;  // of them from the file
  bool fbWhole = false;     // the file's last byte is among them
  bool fbFirst = true;
  std::size_t fBefore = 0;
  std::size_t fStart = 0;
  std::size_t fEnd = 0;
  std::vector<Range> fFields;
};

}  // namespace MCHost
