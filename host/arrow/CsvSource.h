// A CSV or TSV file, or the text of one held in memory.
#pragma once

#include <arrow/type_fwd.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/arrow/CsvInspector.h"
#include "host/arrow/CsvRecords.h"
#include "host/arrow/FileStamp.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

class CsvSource final : public IArrowSource {
 public:
  // Checks the file and settles what its columns hold. Throws HostIOError.
  CsvSource(std::string path, CsvRules rules);

  // The same for a text that is already there. `name` names it in messages.
  CsvSource(std::string name, std::string text, CsvRules rules);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  // Whole numbers are 64-bit integers, and a column of which any text says more than its value does
  // is one of texts.
  void OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  Kept KeptOf(int column) override;
  std::int64_t CaseCount() const override { return fInspector.CaseCount(); }
  std::vector<std::string> Notes() const override;

  // The file as it is written, from its first record on. Throws HostIOError.
  CsvRecords Records() const;

 private:
  using Types = std::vector<std::shared_ptr<arrow::DataType>>;

  // Whether the doubles of a column hold its numbers: all of them, or all but infinities and NaN,
  // which a table does not keep.
  enum class Digits { kLost, kHeld, kHeldButWords };

  void InspectFile();
  Digits DigitsOf(std::size_t column);
  void LookAtDigits();
  void LookAtDigit(std::string_view field, Digits& digits) const;
  std::shared_ptr<arrow::io::InputStream> OpenBytes() const;
  void OpenAs(const Types& types, const std::vector<int>* columns, ArrowArrayStream* stream) const;

  std::string fName;
  bool fbFile;
  FileStamp fStamp;
  std::string fText;
  CsvRules fRules;
  CsvInspector fInspector;
  std::vector<Digits> fDigits;  // of each column; empty until it must be known
};

}  // namespace MCHost
