#include "fuzz/WildStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

namespace PredSelectFuzz {

namespace {

constexpr const char* kFormats[] = {
    "g",     "u",        "l",  "i", "b",  "U",   "vu",   "c",       "C",         "s",    "S",
    "I",     "L",        "e",  "f", "n",  "tdD", "tdm",  "tts",     "tt",        "tsu:", "tDn",
    "d:5,2", "d:9,2,32", "+s", "z", "+l", "",    "tsq:", "d:5,2,7", "d:40,1,256"};
constexpr std::size_t kPlainFormats = 8;
constexpr std::size_t kMostBytesOfCell = 32;
constexpr std::size_t kBytesOfTexts = 64;
constexpr std::int32_t kInlineView = 12;

// Wrong once in a while.
std::int64_t Near(FuzzedDataProvider& bytes, std::int64_t right) {
  constexpr std::int64_t kWrong[] = {-1, std::numeric_limits<std::int64_t>::min(), 0, 1, 7};
  return bytes.ConsumeIntegralInRange(0, 31) == 31 ? bytes.PickValueInArray(kWrong) : right;
}

std::vector<std::uint64_t> Filled(FuzzedDataProvider& bytes, std::size_t size) {
  std::vector<std::uint64_t> words(size / 8 + 1);
  const std::vector<char> read = bytes.ConsumeBytes<char>(std::min<std::size_t>(size, 24));
  // A few bytes go a long way: cells are what was read, over and over.
  for (std::size_t at = 0; !read.empty() && at + read.size() <= size; at += read.size()) {
    std::memcpy(reinterpret_cast<char*>(words.data()) + at, read.data(), read.size());
  }
  return words;
}

template <class Offset>
std::vector<std::uint64_t> TextOffsets(FuzzedDataProvider& bytes, std::size_t n) {
  std::vector<std::uint64_t> words(n * sizeof(Offset) / 8 + 2);
  auto* offsets = reinterpret_cast<Offset*>(words.data());
  const bool ordered = bytes.ConsumeBool();
  Offset at = 0;
  for (std::size_t i = 0; i <= n; ++i) {
    const Offset next = bytes.ConsumeIntegralInRange<Offset>(-1, kBytesOfTexts / 2);
    at = ordered ? static_cast<Offset>(std::min<Offset>(kBytesOfTexts, at + std::abs(next % 4)))
                 : next;
    offsets[i] = at;
  }
  return words;
}

std::vector<std::uint64_t> Views(FuzzedDataProvider& bytes, std::size_t n) {
  std::vector<std::uint64_t> words(2 * n + 2);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int32_t view[] = {bytes.ConsumeIntegralInRange<std::int32_t>(-1, 2 * kInlineView),
                                 0x61626364, bytes.ConsumeIntegralInRange<std::int32_t>(-1, 2),
                                 bytes.ConsumeIntegralInRange<std::int32_t>(-1, 2 * kBytesOfTexts)};
    std::memcpy(&words[2 * i], view, sizeof(view));
  }
  return words;
}

}  // namespace

struct WildStream::Reader {
  WildStream* fpOf;
  std::size_t fNext = 0;
  int fCalls = 0;

  bool Fails() { return fCalls++ == fpOf->fFailsAt; }
};

// What a schema's children, and an array's, are kept in while they are lent.
struct WildStream::LentKind {
  WildStream* fpOf;
  std::vector<ArrowSchema> fColumns, fDictionary;
  std::vector<ArrowSchema*> fpColumns;
};

struct WildStream::LentCells {
  WildStream* fpOf;
  std::vector<const void*> fpBuffers;
  std::vector<ArrowArray> fColumns, fDictionary;
  std::vector<ArrowArray*> fpColumns;
};

namespace {

// Releases a schema or array with what it holds; children may have been taken out of it before.
template <class Lent, class Struct>
void Release(Struct* given) {
  auto* lent = static_cast<Lent*>(given->private_data);
  for (auto* parts : {&lent->fColumns, &lent->fDictionary}) {
    for (Struct& part : *parts) {
      if (part.release != nullptr) part.release(&part);
    }
  }
  given->release = nullptr;
  delete lent;
}

}  // namespace

WildStream::Kind WildStream::ColumnOf(FuzzedDataProvider& bytes, std::size_t number) {
  Kind kind;
  const std::size_t most = bytes.ConsumeBool() ? std::size(kFormats) : kPlainFormats;
  kind.fFormat = kFormats[bytes.ConsumeIntegralInRange<std::size_t>(0, most - 1)];
  kind.fName = std::string(1, static_cast<char>('a' + number));
  const int odd = bytes.ConsumeIntegralInRange(0, 31);
  if (odd == 1) kind.fName = bytes.ConsumeRandomLengthString(8);
  if (odd == 2) kind.fIsNamed = false;
  if (odd == 3) kind.fFormat = bytes.ConsumeRandomLengthString(4);
  if (odd == 4) kind.fMetadata = std::string("\1\0\0\0\5\0\0\0label\2\0\0\0\"<", 19);
  if (odd > 24) {
    kind.fDictionary.push_back(ColumnOf(bytes, number));
    if (odd > 26) kind.fFormat = "i";
  }
  return kind;
}

WildStream::Cells WildStream::CellsOf(FuzzedDataProvider& bytes, const Kind& kind,
                                      std::int64_t length) {
  Cells cells;
  cells.fLength = Near(bytes, length);
  cells.fOffset = Near(bytes, 0);
  cells.fNulls = Near(bytes, bytes.ConsumeBool() ? -1 : 0);
  // As many as any reader that has checked the lengths can ask for.
  const auto n = static_cast<std::size_t>(std::max<std::int64_t>(length, 7) + 7);
  cells.fBuffers.push_back(bytes.ConsumeBool() ? Words() : Filled(bytes, n));
  const bool isView = kind.fFormat == "vu";
  if (isView) {
    cells.fBuffers.push_back(Views(bytes, n));
    cells.fBuffers.push_back(Filled(bytes, kBytesOfTexts));
    cells.fBuffers.push_back(Words(1, kBytesOfTexts));
  } else if (kind.fFormat == "u" || kind.fFormat == "U") {
    cells.fBuffers.push_back(kind.fFormat == "u" ? TextOffsets<std::int32_t>(bytes, n)
                                                 : TextOffsets<std::int64_t>(bytes, n));
    cells.fBuffers.push_back(Filled(bytes, kBytesOfTexts));
  } else {
    cells.fBuffers.push_back(Filled(bytes, n * kMostBytesOfCell));
  }
  for (Words& buffer : cells.fBuffers) {
    if (bytes.ConsumeIntegralInRange(0, 63) == 63) buffer.clear();
  }
  // Fewer than there are, never more.
  cells.fBufferCount = std::min(Near(bytes, static_cast<std::int64_t>(cells.fBuffers.size())),
                                static_cast<std::int64_t>(cells.fBuffers.size()));
  if (!kind.fDictionary.empty() && bytes.ConsumeIntegralInRange(0, 31) != 31) {
    cells.fDictionary.push_back(
        CellsOf(bytes, kind.fDictionary[0], bytes.ConsumeIntegralInRange(0, 5)));
  }
  return cells;
}

WildStream::WildStream(FuzzedDataProvider& bytes) {
  fKind.fFormat = bytes.ConsumeIntegralInRange(0, 63) == 63 ? "i" : "+s";
  const std::size_t columns = bytes.ConsumeIntegralInRange<std::size_t>(0, 5);
  for (std::size_t i = 0; i < columns; ++i) fKind.fColumns.push_back(ColumnOf(bytes, i));
  const std::size_t batches = bytes.ConsumeIntegralInRange<std::size_t>(0, 3);
  for (std::size_t i = 0; i < batches; ++i) {
    const std::int64_t length = bytes.ConsumeIntegralInRange(0, 40);
    Cells batch;
    batch.fLength = Near(bytes, length);
    batch.fOffset = Near(bytes, 0);
    batch.fBufferCount = 1;
    batch.fBuffers.resize(1);
    for (const Kind& kind : fKind.fColumns) batch.fColumns.push_back(CellsOf(bytes, kind, length));
    if (bytes.ConsumeIntegralInRange(0, 63) == 63 && !batch.fColumns.empty())
      batch.fColumns.pop_back();
    fBatches.push_back(std::move(batch));
  }
  if (bytes.ConsumeIntegralInRange(0, 31) == 31) fFailsAt = bytes.ConsumeIntegralInRange(0, 4);
}

std::string WildStream::NameOf(std::size_t column) const {
  return column < fKind.fColumns.size() ? fKind.fColumns[column].fName : "";
}

void WildStream::Lend(const Kind& kind, ArrowSchema* schema) {
  auto* lent = new LentKind{this, {}, {}, {}};
  lent->fColumns.resize(kind.fColumns.size());
  lent->fDictionary.resize(kind.fDictionary.size());
  for (std::size_t i = 0; i < kind.fColumns.size(); ++i) {
    Lend(kind.fColumns[i], &lent->fColumns[i]);
    lent->fpColumns.push_back(&lent->fColumns[i]);
  }
  if (!kind.fDictionary.empty()) Lend(kind.fDictionary[0], &lent->fDictionary[0]);
  ++fLent;
  *schema = {kind.fFormat.c_str(),
             kind.fIsNamed ? kind.fName.c_str() : nullptr,
             kind.fMetadata.empty() ? nullptr : kind.fMetadata.data(),
             ARROW_FLAG_NULLABLE,
             static_cast<std::int64_t>(kind.fColumns.size()),
             lent->fpColumns.data(),
             kind.fDictionary.empty() ? nullptr : lent->fDictionary.data(),
             [](ArrowSchema* given) {
               --static_cast<LentKind*>(given->private_data)->fpOf->fLent;
               Release<LentKind>(given);
             },
             lent};
}

void WildStream::Lend(const Cells& cells, ArrowArray* array) {
  auto* lent = new LentCells{this, {}, {}, {}, {}};
  for (const Words& buffer : cells.fBuffers) {
    lent->fpBuffers.push_back(buffer.empty() ? nullptr : buffer.data());
  }
  lent->fColumns.resize(cells.fColumns.size());
  lent->fDictionary.resize(cells.fDictionary.size());
  for (std::size_t i = 0; i < cells.fColumns.size(); ++i) {
    Lend(cells.fColumns[i], &lent->fColumns[i]);
    lent->fpColumns.push_back(&lent->fColumns[i]);
  }
  if (!cells.fDictionary.empty()) Lend(cells.fDictionary[0], &lent->fDictionary[0]);
  ++fLent;
  *array = {cells.fLength,
            cells.fNulls,
            cells.fOffset,
            cells.fBufferCount,
            static_cast<std::int64_t>(cells.fColumns.size()),
            lent->fpBuffers.data(),
            lent->fpColumns.data(),
            cells.fDictionary.empty() ? nullptr : lent->fDictionary.data(),
            [](ArrowArray* given) {
              --static_cast<LentCells*>(given->private_data)->fpOf->fLent;
              Release<LentCells>(given);
            },
            lent};
}

ArrowArrayStream WildStream::Open() {
  ++fLent;
  ArrowArrayStream stream;
  stream.private_data = new Reader{this, 0, 0};
  stream.get_schema = [](ArrowArrayStream* of, ArrowSchema* schema) {
    auto* reader = static_cast<Reader*>(of->private_data);
    if (reader->Fails()) return EIO;
    reader->fpOf->Lend(reader->fpOf->fKind, schema);
    return 0;
  };
  stream.get_next = [](ArrowArrayStream* of, ArrowArray* array) {
    auto* reader = static_cast<Reader*>(of->private_data);
    if (reader->Fails()) return EIO;
    *array = {};
    const std::vector<Cells>& batches = reader->fpOf->fBatches;
    if (reader->fNext < batches.size()) reader->fpOf->Lend(batches[reader->fNext++], array);
    return 0;
  };
  stream.get_last_error = [](ArrowArrayStream* of) -> const char* {
    return static_cast<Reader*>(of->private_data)->fCalls % 2 == 0 ? nullptr : "it broke";
  };
  stream.release = [](ArrowArrayStream* of) {
    auto* reader = static_cast<Reader*>(of->private_data);
    --reader->fpOf->fLent;
    delete reader;
    of->release = nullptr;
  };
  return stream;
}

}  // namespace PredSelectFuzz
