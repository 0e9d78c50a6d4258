// Cuts the text of a JSON file into records: the lines of JSON Lines, the elements of the one array
// that the file is, or, where the first line is a brace alone, objects that take several lines
// each. What a record says is not looked at.
#pragma once

#include <arrow/io/type_fwd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace MCHost {

class JsonRecords {
 public:
  // `source` names the file in messages.
  JsonRecords(std::shared_ptr<arrow::io::InputStream> input, std::string source);
  ~JsonRecords();

  // Goes to the next record, past blank lines; false behind the last. Throws HostIOError.
  bool Next();

  // REQUIRES of both: Next() was true. The text is void with the next call of it.
  std::string_view Text() const { return std::string_view(fBytes).substr(fStart, fEnd - fStart); }
  std::int64_t Line() const { return fLine; }  // where the record begins, from 1
  std::size_t Column() const { return fColumn; }

 private:
  enum class Form { kUnknown, kLines, kSpread, kArray };

  void Pass(std::size_t bytes);
  bool SkipBlanks(std::string_view blanks);
  void Begin();
  bool NextLine();
  bool NextSpread();
  bool NextElement();
  std::size_t EndOfElement();
  bool Has(std::size_t at);
  [[noreturn]] void Fail(const std::string& reason) const;

  std::shared_ptr<arrow::io::InputStream> fpInput;
  std::string fSource;
  Form fForm = Form::kUnknown;
  std::string fBytes;
  bool fbWhole = false;  // the file's last byte is among them
  bool fbEnded = false;
  bool fbFirst = true;  // no element was met
  std::size_t fStart = 0;
  std::size_t fEnd = 0;
  std::int64_t fLine = 1;
  std::size_t fColumn = 1;
};

}  // namespace MCHost
