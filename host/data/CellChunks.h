// The cells of one column in memory, in chunks of RecordBlock::kMaxCases cases.
//
// A column is either filled from its start, and its chunks are packed once they are full, or
// written to anywhere. Chunks that were written to never move, nor do packed ones; cells that were
// never stored are missing and cost nothing while their whole chunk is empty.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "common/RecordBlock.h"
#include "host/data/PackedCells.h"

namespace MCHost {

template <class T>
class CellChunks {
 public:
  static constexpr std::size_t kChunk = MCCommon::RecordBlock::kMaxCases;

  explicit CellChunks(T missing) : fMissing(missing) {}

  // Room for n more cells behind the last, to be filled by the caller before the next call.
  // REQUIRES: they fit into one chunk; nothing was written anywhere.
  T* Extend(std::size_t n) {
    if (fOpen.size() == kChunk) Close();
    if (fOpen.empty()) fOpen.reserve(fPacked.empty() ? n : kChunk);
    fOpen.resize(fOpen.size() + n, fMissing);
    return fOpen.data() + (fOpen.size() - n);
  }

  // Says that no more cells are to come behind the last.
  void Close() {
    if (fOpen.empty()) return;
    fPacked.emplace_back(std::move(fOpen), fMissing);
    fPackedBytes += fPacked.back().Bytes();
    std::vector<T>().swap(fOpen);
  }

  // What the packed chunks take.
  std::size_t PackedBytes() const { return fPackedBytes; }

  // Stores cells anywhere; those in between stay missing. REQUIRES: the column was not extended.
  void Write(std::int64_t firstCase, const T* values, std::size_t n) {
    auto at = static_cast<std::size_t>(firstCase);
    while (n > 0) {
      const std::size_t fit = std::min(n, kChunk - at % kChunk);
      std::copy_n(values, fit, Touch(at / kChunk) + at % kChunk);
      at += fit;
      values += fit;
      n -= fit;
    }
  }

  // n stored cells from a case on, where they lie or in the buffer. REQUIRES: they are those of one
  // chunk.
  const T* Read(std::int64_t firstCase, std::size_t n, std::vector<T>& buffer) const {
    const auto at = static_cast<std::size_t>(firstCase);
    const std::size_t chunk = at / kChunk;
    if (chunk < fPacked.size()) {
      if (buffer.size() < n) buffer.resize(n);
      return fPacked[chunk].Read(at % kChunk, n, buffer.data());
    }
    if (!fOpen.empty() && chunk == fPacked.size()) return fOpen.data() + at % kChunk;
    if (chunk >= fWritten.size() || fWritten[chunk].empty()) return EmptyChunk();
    return fWritten[chunk].data() + at % kChunk;
  }

 private:
  T* Touch(std::size_t number) {
    if (number >= fWritten.size()) fWritten.resize(number + 1);
    std::vector<T>& chunk = fWritten[number];
    if (chunk.size() < kChunk) chunk.resize(kChunk, fMissing);
    return chunk.data();
  }

  // All missing; one for all columns of the same kind, as they share one marker.
  const T* EmptyChunk() const {
    static const std::vector<T> chunk(kChunk, fMissing);
    return chunk.data();
  }

  std::vector<PackedCells<T>> fPacked;
  std::size_t fPackedBytes = 0;
  std::vector<T> fOpen;  // behind them
  std::vector<std::vector<T>> fWritten;
  T fMissing;
};

}  // namespace MCHost
