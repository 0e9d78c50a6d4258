#include "host/arrow/CsvRecords.h"

#include <arrow/io/interfaces.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

CsvRecords::CsvRecords(std::shared_ptr<arrow::io::InputStream> input, char delimiter,
                       std::string source, char quote)
    : fpInput(std::move(input)),
      fDelimiter(delimiter),
      fQuote(quote),
      fSource(std::move(source)),
      fBytes(1, ' ') {
  fClasses[static_cast<unsigned char>(delimiter)] = kDelimiter;
  fClasses['\n'] = fClasses['\r'] = kNewline;
}

CsvRecords::~CsvRecords() = default;

bool CsvRecords::Next() {
  fBefore = fStart = fEnd;
  while (!SkipLineEnds() || !FindFields()) {
    if (!fbWhole) {
      ReadMore();
    } else if (fStart == fnBytes) {
      return false;
    } else {
      throw HostIOError(fSource, "", "the data changed while they were read");
    }
  }
  return true;
}

// Sets the start of the record; false where more of the file decides on it.
bool CsvRecords::SkipLineEnds() {
  if (fbFirst) {
    if (fnBytes < kByteOrderMark.size() && !fbWhole) return false;
    fbFirst = false;
    if (View({0, fnBytes}).starts_with(kByteOrderMark)) fStart = kByteOrderMark.size();
  }
  while (fStart < fnBytes && ClassAt(fStart) == kNewline) ++fStart;
  return fStart < fnBytes;
}

// Sets the fields and the end of the record; false where the bytes that are there do not hold it.
bool CsvRecords::FindFields() {
  fFields.clear();
  for (std::size_t at = fStart;; ++at) {
    const std::size_t from = at;
    if (!FindFieldEnd(at)) return false;
    fFields.push_back({from, at});
    if (at < fnBytes && ClassAt(at) == kDelimiter) continue;
    fEnd = at;
    return true;
  }
}

// Moves from a field's start to its end.
bool CsvRecords::FindFieldEnd(std::size_t& at) const {
  // A quote that ends the field and one that is doubled change the state alike.
  while (at < fnBytes && fBytes[at] == fQuote) {
    const void* close = std::memchr(&fBytes[at + 1], fQuote, fnBytes - at - 1);
    if (close == nullptr) return false;
    at = static_cast<std::size_t>(static_cast<const char*>(close) - fBytes.data()) + 1;
  }
  while (at < fnBytes && ClassAt(at) == kOrdinary) ++at;
  return at < fnBytes || fbWhole;
}

// Keeps what stands before the record and what there is of it, and reads a piece behind them.
void CsvRecords::ReadMore() {
  std::memmove(fBytes.data(), &fBytes[fBefore], fnBytes - fBefore);
  fnBytes -= fBefore;
  fStart -= std::exchange(fBefore, 0);
  fBytes.resize(std::max(fBytes.size(), 2 * fnBytes + kPieceBytes));
  const std::int64_t n = Value(
      fpInput->Read(static_cast<std::int64_t>(fBytes.size() - fnBytes), &fBytes[fnBytes]), fSource);
  fnBytes += static_cast<std::size_t>(n);
  fbWhole = n == 0;
}

std::string CsvRecords::TextOf(std::string_view field) const {
  if (field.empty() || field.front() != fQuote) return std::string(field);
  std::string text;
  for (std::size_t i = 1; i + 1 < field.size(); ++i) {
    text += field[i];
    if (field[i] == fQuote) ++i;
  }
  return text;
}

}  // namespace MCHost
