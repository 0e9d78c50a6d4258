#include "host/arrow/CsvPieces.h"

#include <arrow/type.h>
#include <arrow/util/thread_pool.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/WithoutSignals.h"

namespace MCHost {

namespace {

constexpr std::string_view kLineEnds = "\r\n";

// For lines that are looked at, but not read.
CsvPromise OfNoColumns(CsvPromise promise) {
  promise.fpSchema = arrow::schema({});
  promise.fPlaces.clear();
  promise.fTexts = CsvTexts(CsvNumbers{});
  return promise;
}

// What a function gives or throws, where nobody can catch it.
template <class Function>
auto WithoutThrowing(Function function) -> decltype(function()) {
  try {
    return function();
  } catch (const std::bad_alloc&) {
    return arrow::Status::OutOfMemory("for cells");
  } catch (const std::exception& error) {
    return arrow::Status::UnknownError(error.what());
  }
}

}  // namespace

CsvPieces::CsvPieces(std::shared_ptr<arrow::io::InputStream> input, const CsvPieceRules& rules)
    : fpSchema(rules.fPromise.fTexts.TurnedSchema(*rules.fPromise.fpSchema)),
      fDecoder(rules.fPromise),
      fHeader(OfNoColumns(rules.fPromise)),
      fbHeader(rules.fbHeader),
      fLines(std::move(input), rules.fPieceBytes) {
  const auto threads = static_cast<std::size_t>(std::max(arrow::GetCpuThreadPoolCapacity(), 1));
  fvSlots.resize(threads + 2);
  Start(threads);
}

void CsvPieces::Start(std::size_t threads) {
  const MCCommon::WithoutSignals kept;
  fvThreads.reserve(threads - 1);
  try {
    while (fvThreads.size() + 1 < threads) {
      fvThreads.emplace_back([this] {
        CsvBounds bounds;
        Serve(bounds);
      });
    }
  } catch (const std::system_error&) {
    // Those that did start will do.
  }
}

CsvPieces::~CsvPieces() {
  {
    const std::lock_guard lock(fMutex);
    fbLeft = true;
  }
  fChanged.notify_all();
  for (std::thread& thread : fvThreads) thread.join();
}

void CsvPieces::Serve(CsvBounds& bounds) {
  std::unique_lock lock(fMutex);
  for (;;) {
    fChanged.wait(lock, [this] { return fbLeft || IsWanted(); });
    if (fbLeft) return;
    lock.unlock();
    DecodeOne(bounds);
    lock.lock();
  }
}

arrow::Status CsvPieces::ReadNext(Batch* batch) {
  batch->reset();
  std::unique_lock lock(fMutex);
  while (!IsFirstThere()) {
    if (fbEnded && fnAhead == 0) return arrow::Status::OK();
    if (IsWanted()) {
      lock.unlock();
      DecodeOne(fBounds);
      lock.lock();
    } else {
      fChanged.wait(lock, [this] { return IsFirstThere() || IsWanted(); });
    }
  }
  Slot first = std::exchange(fvSlots[fFirst], {});
  fFirst = (fFirst + 1) % fvSlots.size();
  --fnAhead;
  fbEnded |= !first.fStatus.ok();
  lock.unlock();
  fChanged.notify_all();
  *batch = std::move(first.fpBatch);
  return first.fStatus;
}

void CsvPieces::DecodeOne(CsvBounds& bounds) {
  Slot* const slot = Fetch();
  if (slot == nullptr) return;
  slot->fStatus = WithoutThrowing(
      [&] { return fDecoder.Decode(slot->fPiece.fText, bounds).Value(&slot->fpBatch); });
  slot->fPiece = {};
  {
    const std::lock_guard lock(fMutex);
    slot->fbDecoded = true;
  }
  fChanged.notify_all();
}

// The slot of the next piece, which waits for its cells; null where there is none.
CsvPieces::Slot* CsvPieces::Fetch() {
  const std::lock_guard fetching(fFetching);
  {
    const std::lock_guard lock(fMutex);
    if (!IsWanted()) return nullptr;
  }
  arrow::Result<CsvPiece> piece = WithoutThrowing([this] { return FetchPiece(); });
  const std::lock_guard lock(fMutex);
  fbEnded |= !piece.ok() || piece->fText.empty();
  if (piece.ok() && fbEnded) {
    fChanged.notify_all();
    return nullptr;
  }
  Slot& slot = fvSlots[(fFirst + fnAhead++) % fvSlots.size()];
  if (piece.ok()) {
    slot.fPiece = *std::move(piece);
    return &slot;
  }
  slot.fStatus = piece.status();
  slot.fbDecoded = true;
  fChanged.notify_all();
  return nullptr;
}

arrow::Result<CsvPiece> CsvPieces::FetchPiece() {
  ARROW_ASSIGN_OR_RAISE(CsvPiece piece, fLines.Next());
  if (fbHeader) ARROW_RETURN_NOT_OK(SkipHeader(piece));
  fbHeader = false;
  return piece;
}

arrow::Status CsvPieces::SkipHeader(CsvPiece& piece) const {
  std::string_view& text = piece.fText;
  text.remove_prefix(std::min(text.find_first_not_of(kLineEnds), text.size()));
  const std::size_t end = std::min(text.find_first_of(kLineEnds), text.size());
  const std::string header = std::string(text.substr(0, end)) + std::string(CsvDecoder::kBehind, '\n');
  CsvBounds bounds;
  text.remove_prefix(end);
  return fHeader.Decode(std::string_view(header).substr(0, end), bounds).status();
}

}  // namespace MCHost
