// Turns whole lines of a CSV file into cells, as what its start promises of the columns.
//
// What it gives is what a CsvInspector and the reader of the whole file would make of the lines,
// bit by bit, as long as they keep the promise. Where they may not, or where the inspector would
// say anything against them, it gives an error: then only the inspector's look at the whole file
// tells.
#pragma once

#include <arrow/record_batch.h>
#include <arrow/result.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/arrow/CsvTexts.h"

namespace MCHost {

class CsvBounds;

struct CsvPromise {
  char fDelimiter = ',';
  char fQuote = '"';  // kNoMark for none
  char fDecimal = '.';
  std::vector<std::string> fNullTokens;
  std::size_t fnColumns = 0;  // of the file
  // Of what is read: what the cells become, where the columns stand in the file, and whether only
  // whole numbers are right. Numbers are doubles, texts a dictionary by 32-bit codes; texts as such
  // may be turned into something else.
  std::shared_ptr<arrow::Schema> fpSchema;
  std::vector<int> fPlaces;
  std::vector<bool> fWhole;
  CsvTexts fTexts{CsvNumbers{}};  // what turns them
};

// Used by any number of threads at once.
class CsvDecoder {
 public:
  // What must stand behind a text that is decoded: a line end, and so many bytes in all.
  static constexpr std::size_t kBehind = 16;

  explicit CsvDecoder(CsvPromise promise);

  // The cells of lines that are complete but for the end of the last. `bounds` is room that each
  // thread has for itself. REQUIRES: kBehind.
  arrow::Result<std::shared_ptr<arrow::RecordBatch>> Decode(std::string_view text,
                                                            CsvBounds& bounds) const;

  static arrow::Status NotAsPromised();

 private:
  // How the cells of a column of the file are read.
  enum class Reading { kSkipped, kNumbers, kWholeNumbers, kWords, kTexts, kNothing };
  class Lines;

  bool IsNull(std::string_view text) const;
  bool AreTurnedRight(const arrow::RecordBatch& batch) const;

  CsvPromise fPromise;
  std::vector<Reading> fReadings;       // of each column of the file
  std::array<bool, 256> fStartsNull{};  // first bytes of the null tokens
  bool fbEmptyIsNull = false;
  bool fbNumberIsNull = false;  // a null token may be read as a number
};

}  // namespace MCHost
