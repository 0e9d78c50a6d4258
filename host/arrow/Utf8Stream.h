// A text of another encoding as UTF-8.
//
// Half of a pair of UTF-16 ends the reading with an error; every byte is a character of
// Windows-1252, those that it leaves open being control codes as in Latin-1.
#pragma once

#include <memory>
#include <string>

#include "host/arrow/PulledStream.h"
#include "host/data/ReadingOptions.h"

namespace MCHost {

class Utf8Stream final : public PulledStream {
 public:
  // REQUIRES: another encoding than UTF-8.
  Utf8Stream(std::shared_ptr<arrow::io::InputStream> text, TextEncoding encoding);

 private:
  arrow::Result<std::int64_t> Pull(std::int64_t n, std::uint8_t* out) override;
  arrow::Status ReadPiece();
  arrow::Status TakePairs();
  arrow::Status TakeUnit(std::uint32_t unit);

  TextEncoding fEncoding;
  std::string fBytes;           // as they come
  std::size_t fnLeft = 0;       // of them, from the start, not turned yet: half a unit
  std::uint32_t fHighHalf = 0;  // of a pair that is not whole yet
  std::string fText;            // turned
  std::size_t fAt = 0;          // of it, given out
  bool fbEnded = false;
};

// The text of Windows-1252, which has the letters of Latin-1, as UTF-8.
void AppendWindows1252(std::string& text, std::string_view bytes);

}  // namespace MCHost
