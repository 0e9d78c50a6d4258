#include "host/arrow/JsonRecords.h"

#include <arrow/io/interfaces.h>

#include <algorithm>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\n";

bool IsOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

}  // namespace

JsonRecords::JsonRecords(std::shared_ptr<arrow::io::InputStream> input, std::string source)
    : fpInput(std::move(input)), fSource(std::move(source)) {}

JsonRecords::~JsonRecords() = default;

bool JsonRecords::Next() {
  if (fbEnded) return false;
  if (fForm == Form::kUnknown) Begin();
  Pass(fEnd - fStart);
  fbEnded = !(fForm == Form::kArray    ? NextElement()
              : fForm == Form::kSpread ? NextSpread()
                                       : NextLine());
  return !fbEnded;
}

// Goes on by so many bytes, which are there.
void JsonRecords::Pass(std::size_t bytes) {
  const std::string_view passed = std::string_view(fBytes).substr(fStart, bytes);
  const std::size_t last = passed.rfind('\n');
  fLine += std::count(passed.begin(), passed.end(), '\n');
  fColumn = last == std::string_view::npos ? fColumn + bytes : bytes - last;
  fStart += bytes;
}

void JsonRecords::Begin() {
  fForm = Form::kLines;
  if (Has(kByteOrderMark.size() - 1) && fBytes.starts_with(kByteOrderMark)) {
    fStart = kByteOrderMark.size();
  }
  if (!SkipBlanks(kBlanks)) return;
  if (fBytes[fStart] == '[') {
    fForm = Form::kArray;
    Pass(1);
    fEnd = fStart;
  } else if (fBytes[fStart] == '{') {
    std::size_t at = 1;
    while (Has(fStart + at) && IsOneOf(fBytes[fStart + at], " \t\r")) ++at;
    if (Has(fStart + at) && fBytes[fStart + at] == '\n') fForm = Form::kSpread;
  }
}

// Goes to the next byte that is none of these; false where there is none.
bool JsonRecords::SkipBlanks(std::string_view blanks) {
  while (Has(fStart) && IsOneOf(fBytes[fStart], blanks)) Pass(1);
  fEnd = fStart;
  return Has(fStart);
}

bool JsonRecords::NextLine() {
  if (!SkipBlanks(kBlanks)) return false;
  std::size_t end = fBytes.find('\n', fStart);
  while (end == std::string::npos && !fbWhole) {
    const std::size_t seen = fBytes.size() - fStart;
    if (!Has(fBytes.size())) break;  // which moves what there is to the front
    end = fBytes.find('\n', fStart + seen);
  }
  fEnd = std::min(end, fBytes.size());
  return true;
}

bool JsonRecords::NextSpread() {
  if (!SkipBlanks(kBlanks)) return false;
  const std::size_t size = EndOfElement();
  fEnd = fStart + size;
  return true;
}

bool JsonRecords::NextElement() {
  if (!SkipBlanks(kBlanks)) Fail("the array has no end");
  const bool isEnd = fBytes[fStart] == ']';
  if (!isEnd && !fbFirst) {
    if (fBytes[fStart] != ',') Fail("the records of the array lack a comma between them");
    Pass(1);
    if (!SkipBlanks(kBlanks)) Fail("the array has no end");
  }
  fbFirst = false;
  if (isEnd) {
    Pass(1);
    if (SkipBlanks(kBlanks)) Fail("there is more behind the end of the array");
    return false;
  }
  const std::size_t size = EndOfElement();
  fEnd = fStart + size;
  return true;
}

// Its bytes: up to the bracket that closes it, or to what cannot be in a plain value.
std::size_t JsonRecords::EndOfElement() {
  int depth = 0;
  bool isText = false;
  for (std::size_t at = 0; Has(fStart + at); ++at) {
    const char c = fBytes[fStart + at];
    if (isText) {
      if (c == '\\') ++at;
      isText = c != '"';
    } else if (c == '"') {
      isText = true;
    } else if (IsOneOf(c, "{[")) {
      ++depth;
    } else if (depth > 0 && IsOneOf(c, "}]")) {
      if (--depth == 0) return at + 1;
    } else if (depth == 0 && IsOneOf(c, ",] \t\r\n")) {
      return at;
    }
  }
  Fail(fForm == Form::kArray ? "the array has no end" : "the record has no end");
}

// Whether there is such a byte. Reading moves what is kept to the front: fStart and fEnd with it.
bool JsonRecords::Has(std::size_t at) {
  if (at < fBytes.size()) return true;
  if (fbWhole) return false;
  const std::size_t beyond = at - fStart;
  fBytes.erase(0, fStart);
  fEnd -= std::min(fEnd, fStart);
  fStart = 0;
  while (!fbWhole && beyond >= fBytes.size()) {
    const std::size_t had = fBytes.size();
    fBytes.resize(had + kPieceBytes);
    const auto n = static_cast<std::size_t>(
        Value(fpInput->Read(static_cast<std::int64_t>(kPieceBytes), &fBytes[had]), fSource));
    fBytes.resize(had + n);
    fbWhole = n == 0;
  }
  return beyond < fBytes.size();
}

void JsonRecords::Fail(const std::string& reason) const {
  throw HostIOError(fSource, "line " + std::to_string(fLine), reason);
}

}  // namespace MCHost
