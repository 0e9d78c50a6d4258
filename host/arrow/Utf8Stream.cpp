#include "host/arrow/Utf8Stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace MCHost {

namespace {

constexpr std::int64_t kPieceBytes = std::int64_t{1} << 16;

// The characters of 0x80 to 0x9F; those that are not there are what Latin-1 has, control codes.
constexpr std::array<std::uint16_t, 32> kWindows = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

void Append(std::string& text, std::uint32_t point) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (point >> shift & 0x3F)); };
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0 | point >> 6);
    tail(0);
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0 | point >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | point >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

void AppendWindows1252(std::string& text, std::string_view bytes) {
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    Append(text, byte >= 0x80 && byte < 0xA0 ? kWindows[byte - 0x80U] : byte);
  }
}

Utf8Stream::Utf8Stream(std::shared_ptr<arrow::io::InputStream> text, TextEncoding encoding)
    : PulledStream(std::move(text)), fEncoding(encoding) {}

arrow::Result<std::int64_t> Utf8Stream::Pull(std::int64_t n, std::uint8_t* out) {
  while (fAt == fText.size() && !fbEnded) ARROW_RETURN_NOT_OK(ReadPiece());
  const std::size_t given = std::min(static_cast<std::size_t>(n), fText.size() - fAt);
  std::memcpy(out, fText.data() + fAt, given);
  fAt += given;
  return static_cast<std::int64_t>(given);
}

arrow::Status Utf8Stream::ReadPiece() {
  fText.clear();
  fAt = 0;
  fBytes.resize(fnLeft + static_cast<std::size_t>(kPieceBytes));
  ARROW_ASSIGN_OR_RAISE(const std::int64_t got, From().Read(kPieceBytes, &fBytes[fnLeft]));
  fBytes.resize(fnLeft + static_cast<std::size_t>(got));
  fbEnded = got == 0;
  if (fbEnded && (fnLeft > 0 || fHighHalf != 0)) {
    return arrow::Status::IOError("the text ends within a character of UTF-16");
  }
  if (fEncoding != TextEncoding::kWindows1252) return TakePairs();
  AppendWindows1252(fText, fBytes);
  return arrow::Status::OK();
}

arrow::Status Utf8Stream::TakePairs() {
  const std::size_t high = fEncoding == TextEncoding::kUtf16BigEndian ? 0 : 1;
  const auto byte = [this](std::size_t at) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(fBytes[at]));
  };
  std::size_t at = 0;
  for (; at + 1 < fBytes.size(); at += 2) {
    ARROW_RETURN_NOT_OK(TakeUnit(byte(at + high) << 8 | byte(at + 1 - high)));
  }
  fBytes.erase(0, at);
  fnLeft = fBytes.size();
  return arrow::Status::OK();
}

arrow::Status Utf8Stream::TakeUnit(std::uint32_t unit) {
  const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
  const bool isLow = unit >= 0xDC00 && unit < 0xE000;
  if (isLow != (fHighHalf != 0)) {
    return arrow::Status::IOError("the text is not UTF-16: half of a pair stands alone");
  }
  if (isHigh) {
    fHighHalf = unit;
  } else if (isLow) {
    Append(fText, 0x10000 + ((fHighHalf - 0xD800) << 10) + (unit - 0xDC00));
    fHighHalf = 0;
  } else {
    Append(fText, unit);
  }
  return arrow::Status::OK();
}

}  // namespace MCHost
