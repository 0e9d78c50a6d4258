#include "host/arrow/CsvPieces.h"

#include <arrow/type.h>
#include <arrow/util/thread_pool.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <string_view>
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

// What was thrown, where exceptions are not taken.
arrow::Status StatusOf(const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const std::bad_alloc&) {
    return arrow::Status::OutOfMemory("there is not enough memory");
  } catch (const std::exception& error) {
    return arrow::Status::UnknownError(error.what());
  }
}

std::size_t Threads() {
  return static_cast<std::size_t>(std::max(arrow::GetCpuThreadPoolCapacity(), 1));
}

}  // namespace

CsvPieces::CsvPieces(std::shared_ptr<arrow::io::InputStream> input, const CsvPieceRules& rules)
    : fpSchema(rules.fPromise.fTexts.TurnedSchema(*rules.fPromise.fpSchema)),
      fDecoder(rules.fPromise),
      fHeader(OfNoColumns(rules.fPromise)),
      fbHeader(rules.fbHeader),
      fLines(std::move(input), rules.fPieceBytes) {
  fvSlots.resize(Threads() + 2);
}

void CsvPieces::Start() {
  const std::size_t threads = fvSlots.size() - 2;
  const MCCommon::WithoutSignals kept;
  try {
    fvThreads.reserve(threads - 1);
    while (fvThreads.size() + 1 < threads) {
      fvThreads.emplace_back([this] {
        CsvBounds bounds;
        Serve(bounds);
      });
    }
  } catch (const std::exception&) {
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
  // Not before: who only asks what the columns are needs no cells.
  if (!std::exchange(fbStarted, true)) Start();
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
  fbEnded |= !first.fStatus.ok() || first.fpThrown;
  lock.unlock();
  fChanged.notify_all();
  if (first.fpThrown) return StatusOf(first.fpThrown);
  *batch = std::move(first.fpBatch);
  return first.fStatus;
}

// Keeps what the work gives or throws: nothing may leave a thread. False where it failed.
template <class Work>
bool CsvPieces::Try(Slot& slot, Work work) {
  try {
    slot.fStatus = work();
    return slot.fStatus.ok();
  } catch (...) {
    slot.fpThrown = std::current_exception();
    return false;
  }
}

void CsvPieces::DecodeOne(CsvBounds& bounds) {
  Slot* const slot = Fetch();
  if (slot == nullptr) return;
  Try(*slot, [&] { return fDecoder.Decode(slot->fPiece.fText, bounds).Value(&slot->fpBatch); });
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
  Slot* slot = nullptr;
  {
    const std::lock_guard lock(fMutex);
    if (!IsWanted()) return nullptr;
    slot = &fvSlots[(fFirst + fnAhead) % fvSlots.size()];
  }
  const bool isFetched = Try(*slot, [&] { return FetchPiece(slot->fPiece); });
  const bool isLast = isFetched && slot->fPiece.fText.empty();
  const bool isToDecode = isFetched && !isLast;
  {
    const std::lock_guard lock(fMutex);
    fbEnded |= !isToDecode;
    fnAhead += isLast ? 0 : 1;
    slot->fbDecoded = !isToDecode;
  }
  if (!isToDecode) fChanged.notify_all();
  return isToDecode ? slot : nullptr;
}

arrow::Status CsvPieces::FetchPiece(CsvPiece& piece) {
  ARROW_ASSIGN_OR_RAISE(piece, fLines.Next());
  if (fbHeader) ARROW_RETURN_NOT_OK(SkipHeader(piece));
  fbHeader = false;
  return arrow::Status::OK();
}

arrow::Status CsvPieces::SkipHeader(CsvPiece& piece) const {
  std::string_view& text = piece.fText;
  text.remove_prefix(std::min(text.find_first_not_of(kLineEnds), text.size()));
  const std::size_t end = std::min(text.find_first_of(kLineEnds), text.size());
  const std::string header =
      std::string(text.substr(0, end)) + std::string(CsvDecoder::kBehind, '\n');
  CsvBounds bounds;
  text.remove_prefix(end);
  return fHeader.Decode(std::string_view(header).substr(0, end), bounds).status();
}

}  // namespace MCHost
