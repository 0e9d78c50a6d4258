// The cells of one column in memory, in chunks of RecordBlock::kMaxCases cases.
//
// Chunks never move once they are full or written to, so scans hand out pointers into them. Cells
// that were never stored are missing and cost nothing while their whole chunk is empty.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/RecordBlock.h"

namespace MCHost {

template <class T>
class CellChunks {
 public:
  static constexpr std::size_t kChunk = MCCommon::RecordBlock::kMaxCases;

  explicit CellChunks(T missing) : fMissing(missing) {}

  // Room for n more cells behind the last, to be filled by the caller.
  // REQUIRES: they fit into one chunk.
  T* Extend(std::size_t n) {
    if (fChunks.empty() || fChunks.back().size() == kChunk) fChunks.emplace_back();
    std::vector<T>& chunk = fChunks.back();
    chunk.resize(chunk.size() + n, fMissing);
    return chunk.data() + (chunk.size() - n);
  }

  // Stores cells anywhere; those in between stay missing.
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

  // The stored cells from a case up to the end of its chunk.
  const T* View(std::int64_t firstCase) const {
    const auto at = static_cast<std::size_t>(firstCase);
    if (at / kChunk >= fChunks.size() || fChunks[at / kChunk].empty()) return EmptyChunk();
    return fChunks[at / kChunk].data() + at % kChunk;
  }

 private:
  T* Touch(std::size_t number) {
    if (number >= fChunks.size()) fChunks.resize(number + 1);
    std::vector<T>& chunk = fChunks[number];
    if (chunk.size() < kChunk) chunk.resize(kChunk, fMissing);
    return chunk.data();
  }

  // All missing; one for all columns of the same kind, as they share one marker.
  const T* EmptyChunk() const {
    static const std::vector<T> chunk(kChunk, fMissing);
    return chunk.data();
  }

  std::vector<std::vector<T>> fChunks;
  T fMissing;
};

}  // namespace MCHost
