// Reads a CSV file in pieces of whole lines, on several threads, as what its start promises.
//
// What it gives is what the reader of the whole file would give, as long as the file keeps the
// promise; where it may not, reading ends with an error, and a CsvInspector must look at all of it.
// Up to then nothing is known of the rest of the file.
//
// Pieces are fetched one after the other and decoded side by side, ahead of the reader, and given
// in their order. Whoever has time takes the next one, the reader's own thread among them where it
// would wait: no result depends on how many threads there are.
#pragma once

#include <arrow/io/type_fwd.h>
#include <arrow/record_batch.h>

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/arrow/CsvBounds.h"
#include "host/arrow/CsvDecoder.h"
#include "host/arrow/CsvLines.h"

namespace MCHost {

struct CsvPieceRules {
  CsvPromise fPromise;
  std::size_t fPieceBytes;
  bool fbHeader = true;
};

class CsvPieces final : public arrow::RecordBatchReader {
 public:
  CsvPieces(std::shared_ptr<arrow::io::InputStream> input, const CsvPieceRules& rules);
  ~CsvPieces() override;

  std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override;

 private:
  using Batch = std::shared_ptr<arrow::RecordBatch>;

  // A piece that was fetched, and in the end its cells or why there are none.
  struct Slot {
    CsvPiece fPiece;
    Batch fpBatch;
    arrow::Status fStatus;
    std::exception_ptr fpThrown;
    bool fbDecoded = false;
  };

  void Start();
  void Serve(CsvBounds& bounds);
  bool IsWanted() const { return !fbEnded && fnAhead < fvSlots.size(); }
  bool IsFirstThere() const { return fnAhead > 0 && fvSlots[fFirst].fbDecoded; }
  void DecodeOne(CsvBounds& bounds);
  Slot* Fetch();
  arrow::Status FetchPiece(CsvPiece& piece);
  arrow::Status SkipHeader(CsvPiece& piece) const;
  template <class Work>
  static bool Try(Slot& slot, Work work);

  std::shared_ptr<arrow::Schema> fpSchema;
  CsvDecoder fDecoder;
  CsvDecoder fHeader;  // of lines whose cells are not wanted
  bool fbHeader;       // is still to come

  std::mutex fFetching;  // of what the pieces come from
  CsvLines fLines;

  std::mutex fMutex;  // of all below
  std::condition_variable fChanged;
  std::vector<Slot> fvSlots;  // a ring
  std::size_t fFirst = 0;
  std::size_t fnAhead = 0;
  bool fbEnded = false;  // there is no more to fetch
  bool fbLeft = false;   // by the reader

  CsvBounds fBounds;  // of the reader's thread
  bool fbStarted = false;
  std::vector<std::thread> fvThreads;
};

}  // namespace MCHost
