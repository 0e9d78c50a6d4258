// A CSV or TSV file, or the text of one held in memory.
#pragma once

#include <arrow/csv/type_fwd.h>
#include <arrow/type_fwd.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/arrow/CsvInspector.h"
#include "host/arrow/CsvRecords.h"
#include "host/arrow/CsvTexts.h"
#include "host/arrow/TextBytes.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

class CsvSource final : public IArrowSource {
 public:
  // How much of the file is looked at before it is read. Where it is the start alone, the file is
  // read on all cores, once, and whole; what was found is the same.
  enum class Look { kWhole, kStart };

  // Checks the file and settles what its columns hold. Throws HostIOError. With kStart, so many
  // bytes of it are looked at, and as many are read at a time.
  CsvSource(std::string path, CsvRules rules, Look look = Look::kWhole,
            std::size_t startBytes = kStartBytes);

  // The same for a text that is already there. `name` names it in messages.
  CsvSource(std::string name, std::string text, CsvRules rules, Look look = Look::kWhole,
            std::size_t startBytes = kStartBytes);

  // The same for bytes that somebody has looked at already.
  CsvSource(TextBytes bytes, CsvRules rules, Look look = Look::kWhole,
            std::size_t startBytes = kStartBytes);

  const std::string& Name() const override { return fBytes.Name(); }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  // Whole numbers are 64-bit integers, and a column of which any text says more than its value does
  // is one of texts.
  void OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  Kept KeptOf(int column) override;
  std::int64_t CaseCount() const override { return fbStartOnly ? -1 : fInspector.CaseCount(); }
  bool IsReadOnce() const override { return fbStartOnly; }
  bool LookAgain() override;
  std::vector<std::string> Notes() const override;

  // The file as it is written, from its first record on. Throws HostIOError.
  CsvRecords Records() const;

  // How it is written. What is written as other programs' files are can be passed on record by
  // record: names first, quotes and decimal points as usual.
  const CsvRules& Rules() const { return fRules; }
  bool IsUsual() const;

 private:
  static constexpr std::size_t kStartBytes = std::size_t{1} << 20;

  using Types = std::vector<std::shared_ptr<arrow::DataType>>;

  // Whether the doubles of a column hold its numbers: all of them, or all but infinities and NaN,
  // which a table does not keep.
  enum class Digits { kLost, kHeld, kHeldButWords };

  void Inspect(Look look);
  bool IsPromise() const;
  Digits DigitsOf(std::size_t column);
  void LookAtDigits();
  void LookAtDigit(const CsvRecords& records, std::size_t field, Digits& digits) const;
  arrow::csv::ParseOptions ParseOptions() const;
  std::vector<std::string> ColumnNames() const;
  std::int32_t BlankLinesAtStart() const;
  bool IsTurned(int place, const arrow::Field& field) const;
  // Fields of the schema that is asked for, and which columns of the file they are.
  std::shared_ptr<arrow::RecordBatchReader> ReadPieces(arrow::FieldVector fields,
                                                       std::vector<int> places) const;
  std::shared_ptr<arrow::RecordBatchReader> ReadLines(const arrow::FieldVector& fields,
                                                      const std::vector<int>& places) const;
  void OpenAs(const Types& types, const std::vector<int>* columns, ArrowArrayStream* stream) const;

  TextBytes fBytes;
  CsvRules fRules;
  std::size_t fStartBytes;
  CsvInspector fInspector;
  bool fbStartOnly = false;     // the inspector has seen no more of the file
  std::vector<Digits> fDigits;  // of each column; empty until it must be known
};

}  // namespace MCHost
