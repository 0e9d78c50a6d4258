// Positions by key, for entries that stand elsewhere: open addressing, at most half full. An
// entry's position is the number of those that were entered before it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class FSHashIndex {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  std::size_t Size() const { return fSize; }
  void Clear() {
    fSlots.clear();
    fSize = 0;
  }

  // The position of a key, kNone when it was not entered; keyAt(position) is the key of an entry.
  template <class Key, class KeyAt>
  std::size_t Find(const Key& key, KeyAt keyAt) const {
    if (fSlots.empty()) return kNone;
    for (std::size_t slot = SlotOf(key);; slot = Next(slot)) {
      const std::int32_t position = fSlots[slot];
      if (position == kEmpty) return kNone;
      if (keyAt(static_cast<std::size_t>(position)) == key)
        return static_cast<std::size_t>(position);
    }
  }

  // Makes sure that one more key can be entered.
  template <class KeyAt>
  void MakeRoom(KeyAt keyAt) {
    if (2 * (fSize + 1) <= fSlots.size()) return;
    constexpr int kLeastBits = 4;
    const int bits = fSlots.empty() ? kLeastBits : kWordBits - fShift + 1;
    fSlots.assign(std::size_t{1} << bits, kEmpty);
    fShift = kWordBits - bits;
    for (std::size_t position = 0; position < fSize; ++position) Put(keyAt(position), position);
  }

  // REQUIRES: the key is not there, and room was made.
  template <class Key>
  void Enter(const Key& key) {
    Put(key, fSize++);
  }

 private:
  static constexpr std::int32_t kEmpty = -1;
  static constexpr int kWordBits = 64;

  static std::uint64_t Word(int key) { return static_cast<std::uint32_t>(key); }
  static std::uint64_t Word(const std::pair<int, int>& key) {
    return Word(key.first) << 32 | Word(key.second);
  }

  // Fibonacci hashing: the upper bits of a product with 2^64 / golden ratio.
  template <class Key>
  std::size_t SlotOf(const Key& key) const {
    return static_cast<std::size_t>(Word(key) * 0x9E3779B97F4A7C15U >> fShift);
  }
  std::size_t Next(std::size_t slot) const { return (slot + 1) & (fSlots.size() - 1); }

  template <class Key>
  void Put(const Key& key, std::size_t position) {
    std::size_t slot = SlotOf(key);
    while (fSlots[slot] != kEmpty) slot = Next(slot);
    fSlots[slot] = static_cast<std::int32_t>(position);
  }

  std::vector<std::int32_t> fSlots;
  std::size_t fSize = 0;
  int fShift = 0;
};
