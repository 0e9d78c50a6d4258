// Reads a CSV file in pieces of whole lines, on all cores, as what its start promises.
//
// What it gives is what the reader of the whole file would give, as long as the file keeps the
// promise; where it may not, reading ends with an error, and a CsvInspector must look at all of it.
// Up to then nothing is known of the rest of the file.
#pragma once

#include <arrow/csv/options.h>
#include <arrow/io/type_fwd.h>
#include <arrow/record_batch.h>
#include <arrow/util/future.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/CsvPiece.h"
#include "host/arrow/CsvTexts.h"

namespace MCHost {

struct CsvPieceRules {
  arrow::csv::ParseOptions fParse;
  arrow::csv::ConvertOptions fConvert;
  std::vector<std::string> fNames;  // of all columns of the file
  std::vector<bool> fWhole;         // of the columns that are read: only whole numbers are right
  std::size_t fPieceBytes;
  CsvLook fLook{};
  bool fbHeader = true;
  CsvTexts fTexts{CsvNumbers{}};
};

class CsvPieces final : public arrow::RecordBatchReader {
 public:
  CsvPieces(std::shared_ptr<arrow::io::InputStream> input, std::shared_ptr<arrow::Schema> schema,
            CsvPieceRules rules);
  ~CsvPieces() override;

  std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override;

 private:
  using Batch = std::shared_ptr<arrow::RecordBatch>;

  arrow::Result<std::string> NextPiece();
  arrow::Status SkipHeader(std::string& piece);
  arrow::Result<Batch> Parse(std::string piece) const;
  arrow::Status CheckNumbers(const arrow::RecordBatch& batch) const;

  std::shared_ptr<arrow::io::InputStream> fpInput;
  std::shared_ptr<arrow::Schema> fpSchema;
  const CsvPieceRules fRules;
  std::string fRest;  // what was read of the line behind the last piece
  bool fbStarted = false;
  bool fbEnded = false;
  std::deque<arrow::Future<Batch>> fAhead;
};

}  // namespace MCHost
