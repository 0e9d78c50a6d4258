#include "host/arrow/CsvLines.h"

#include <arrow/io/interfaces.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "host/arrow/CsvDecoder.h"

namespace MCHost {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
// A line of more pieces than these is not looked for the end of.
constexpr std::size_t kMostPieces = 16;

// Room for so many bytes, with the text at its start and what must stand behind it.
std::unique_ptr<char[]> RoomFor(std::size_t bytes, std::string_view text) {
  std::unique_ptr<char[]> room(new char[bytes + CsvDecoder::kBehind]);
  std::copy(text.begin(), text.end(), room.get());
  return room;
}

}  // namespace

arrow::Result<CsvPiece> CsvLines::Next() {
  CsvPiece piece;
  std::size_t size = fRest.size();
  std::size_t end = std::string_view::npos;
  piece.fpBytes = RoomFor(size, fRest);
  while (!fbEnded && end == std::string_view::npos) {
    if (size > kMostPieces * fPieceBytes) return CsvDecoder::NotAsPromised();
    piece.fpBytes = RoomFor(size + fPieceBytes, {piece.fpBytes.get(), size});
    char* const at = piece.fpBytes.get() + size;
    ARROW_ASSIGN_OR_RAISE(const std::int64_t n,
                          fpInput->Read(static_cast<std::int64_t>(fPieceBytes), at));
    const std::string_view more(at, static_cast<std::size_t>(n));
    fbEnded = more.empty();
    end = more.rfind('\n');
    if (end != std::string_view::npos) end += size + 1;
    size += more.size();
  }
  end = std::min(end, size);
  char* const bytes = piece.fpBytes.get();
  fRest.assign(bytes + end, size - end);
  std::fill_n(bytes + end, CsvDecoder::kBehind, '\n');
  piece.fText = {bytes, end};
  if (!std::exchange(fbStarted, true) && piece.fText.starts_with(kByteOrderMark)) {
    piece.fText.remove_prefix(kByteOrderMark.size());
  }
  return piece;
}

}  // namespace MCHost
