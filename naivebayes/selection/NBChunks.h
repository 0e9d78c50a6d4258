// Walks through a block of codes in chunks of so few cases that what is held for each category of
// the target stays in a processor's cache, and that a cancel is never far.
#pragma once

#include <algorithm>
#include <cstddef>

#include "common/RecordBlock.h"
#include "naivebayes/store/NBCodeBlock.h"

class NBChunks {
 public:
  explicit NBChunks(int targetCategories)
      : fMost(std::clamp<std::size_t>(kNumbers / std::max(targetCategories, 1), 1,
                                      MCCommon::RecordBlock::kMaxCases)) {}

  // The most cases of a chunk.
  std::size_t Most() const { return fMost; }

  // Calls visit(chunk) for one chunk after another, as long as it returns true; whether it did.
  template <typename Visit>
  bool ForEach(const NBCodeBlock& codes, Visit visit) {
    for (std::size_t first = 0; first < codes.Cases(); first += fMost) {
      fChunk.Take(codes, first, fMost);
      if (!visit(fChunk)) return false;
    }
    return true;
  }

 private:
  static constexpr std::size_t kNumbers = 32768;

  std::size_t fMost;
  NBCodeBlock fChunk;
};
