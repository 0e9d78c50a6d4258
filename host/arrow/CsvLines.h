// The text of a CSV file in pieces of whole lines.
#pragma once

#include <arrow/io/type_fwd.h>
#include <arrow/result.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace MCHost {

// What can be read behind the text is a line end, and more up to CsvDecoder::kBehind bytes.
struct CsvPiece {
  std::unique_ptr<char[]> fpBytes;
  std::string_view fText;
};

class CsvLines {
 public:
  // Pieces of about so many bytes.
  CsvLines(std::shared_ptr<arrow::io::InputStream> input, std::size_t pieceBytes)
      : fpInput(std::move(input)), fPieceBytes(pieceBytes) {}

  // The next ones, without a text behind the last. A byte order mark at the start of the file is
  // left out. Fails where a line is too long for a piece.
  arrow::Result<CsvPiece> Next();

 private:
  std::shared_ptr<arrow::io::InputStream> fpInput;
  std::size_t fPieceBytes;
  std::string fRest;  // what was read of the line behind the last piece
  bool fbStarted = false;
  bool fbEnded = false;
};

}  // namespace MCHost
