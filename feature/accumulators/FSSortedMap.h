// Entries in ascending key order, found by binary search: the common ground of the engine's maps.
//
// A sorted vector: few entries (one per category), walked in order by later stages and friendly to
// the cache. Keys that are small whole numbers are found through a direct index instead of a
// search.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// The place of a small key in the direct index, or -1 for a key that has none.
inline std::int64_t FSDenseSlot(int key) { return key >= 0 && key < 4096 ? key : -1; }

// Pairs are dense while both parts are below 64: there may be a map, and so an index of 16 KB, for
// each of very many predictors.
inline std::int64_t FSDenseSlot(const std::pair<int, int>& key) {
  constexpr unsigned kSide = 64;
  const auto row = static_cast<unsigned>(key.first);
  const auto column = static_cast<unsigned>(key.second);
  return row < kSide && column < kSide ? static_cast<std::int64_t>(row * kSide + column) : -1;
}

// Whether neither a key nor a greater one has a place.
inline bool FSIsBeyondDense(int key) { return key >= 0 && FSDenseSlot(key) < 0; }
inline bool FSIsBeyondDense(const std::pair<int, int>& key) {
  return key.first >= 0 && FSDenseSlot(std::pair(key.first, 0)) < 0;
}

template <class Key, class Value>
class FSSortedMap {
 public:
  using Entry = std::pair<Key, Value>;

  std::size_t Size() const { return fEntries.size(); }

  // The entry at a position in key order. REQUIRES: position < Size().
  const Entry& operator[](std::size_t position) const { return fEntries[position]; }

  auto begin() const { return fEntries.begin(); }
  auto end() const { return fEntries.end(); }

  // False, and `value` left alone, when the key is absent.
  bool GetValue(const Key& key, Value& value) const {
    const auto at = LowerBound(key);
    if (at == fEntries.end() || at->first != key) return false;
    value = at->second;
    return true;
  }

  // Sets the value of a key, entering it if it is absent.
  void Set(const Key& key, const Value& value) { ValueAt(Place(key, value).first) = value; }

  void Clear() {
    fEntries.clear();
    fDense.clear();
  }

 protected:
  // The position of a key, and whether it was there; if not, it is entered with `initial`.
  std::pair<std::size_t, bool> Place(const Key& key, const Value& initial) {
    const std::int64_t slot = FSDenseSlot(key);
    if (slot >= 0 && slot < static_cast<std::int64_t>(fDense.size())) {
      const std::int32_t position = fDense[static_cast<std::size_t>(slot)];
      if (position >= 0) return {static_cast<std::size_t>(position), true};
    }
    return PlaceBySearch(key, initial);
  }

  Value& ValueAt(std::size_t position) { return fEntries[position].second; }
  // Entries may be put in as they are while there are none, in strictly ascending order of the key.
  std::vector<Entry>& Entries() { return fEntries; }
  const std::vector<Entry>& Entries() const { return fEntries; }

 private:
  typename std::vector<Entry>::const_iterator LowerBound(const Key& key) const {
    return std::lower_bound(fEntries.begin(), fEntries.end(), key,
                            [](const Entry& entry, const Key& k) { return entry.first < k; });
  }

  std::pair<std::size_t, bool> PlaceBySearch(const Key& key, const Value& initial) {
    const auto at = LowerBound(key);
    const auto position = static_cast<std::size_t>(at - fEntries.begin());
    if (at != fEntries.end() && at->first == key) return {position, true};
    fEntries.insert(at, {key, initial});
    IndexFrom(position);
    return {position, false};
  }

  // Every entry from a new one on has moved by one place.
  void IndexFrom(std::size_t position) {
    for (std::size_t i = position; i < fEntries.size(); ++i) {
      if (FSIsBeyondDense(fEntries[i].first)) return;
      const std::int64_t slot = FSDenseSlot(fEntries[i].first);
      if (slot < 0) continue;
      const auto at = static_cast<std::size_t>(slot);
      if (at >= fDense.size()) fDense.resize(at + 1, -1);
      fDense[at] = static_cast<std::int32_t>(i);
    }
  }

  std::vector<Entry> fEntries;
  std::vector<std::int32_t> fDense;  // position by slot, -1 for none
};
