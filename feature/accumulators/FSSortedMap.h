// Entries by key, read in ascending key order: the common ground of the engine's maps.
//
// A vector of entries, few or millions, found through a hash index while cases are counted: a new
// key is appended. The first look at the entries after that puts them in order, so that counting
// costs time in proportion to the cases, whatever the number of keys and however often blocks end.
// Reading from several threads is safe once one look has been taken.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "feature/accumulators/FSHashIndex.h"

template <class Key, class Value>
class FSSortedMap {
 public:
  using Entry = std::pair<Key, Value>;

  std::size_t Size() const { return fEntries.size(); }

  // The entry at a position in key order. REQUIRES: position < Size().
  const Entry& operator[](std::size_t position) const { return Entries()[position]; }

  auto begin() const { return Entries().cbegin(); }
  auto end() const { return Entries().cend(); }

  // False, and `value` left alone, when the key is absent.
  bool GetValue(const Key& key, Value& value) const {
    const auto at = std::lower_bound(begin(), end(), key, IsBefore);
    if (at == end() || at->first != key) return false;
    value = at->second;
    return true;
  }

  void Clear() {
    fEntries.clear();
    Forget();
  }

 protected:
  // The position of a key, and whether it was there; if not, it is entered with `initial`.
  // Positions hold until the next look at the entries.
  std::pair<std::size_t, bool> Place(const Key& key, const Value& initial) {
    if (fIndex.Size() != fEntries.size()) IndexAll();
    const auto keyAt = [this](std::size_t position) { return fEntries[position].first; };
    const std::size_t found = fIndex.Find(key, keyAt);
    if (found != FSHashIndex::kNone) return {found, true};
    fIndex.MakeRoom(keyAt);
    const bool ascends = fEntries.empty() || fEntries.back().first < key;
    fEntries.emplace_back(key, initial);
    fIndex.Enter(key);
    if (ascends && fNSorted + 1 == fEntries.size()) ++fNSorted;
    return {fEntries.size() - 1, false};
  }

  Value& ValueAt(std::size_t position) { return fEntries[position].second; }
  const std::vector<Entry>& Entries() const {
    if (fNSorted != fEntries.size()) Sort();
    return fEntries;
  }
  // Entries may be put in as they are while there are none, in strictly ascending order of the key.
  std::vector<Entry>& Entries() {
    if (fNSorted != fEntries.size()) Sort();
    Forget();
    return fEntries;
  }

 private:
  static bool IsBefore(const Entry& entry, const Key& key) { return entry.first < key; }

  void Sort() const {
    const auto before = [](const Entry& a, const Entry& b) { return a.first < b.first; };
    const auto isNew = fEntries.begin() + static_cast<std::ptrdiff_t>(fNSorted);
    std::sort(isNew, fEntries.end(), before);
    std::inplace_merge(fEntries.begin(), isNew, fEntries.end(), before);
    fNSorted = fEntries.size();
    fIndex.Clear();
  }

  void Forget() {
    fNSorted = 0;
    fIndex.Clear();
  }

  void IndexAll() {
    const auto keyAt = [this](std::size_t position) { return fEntries[position].first; };
    fIndex.Clear();
    for (const Entry& entry : fEntries) {
      fIndex.MakeRoom(keyAt);
      fIndex.Enter(entry.first);
    }
  }

  mutable std::vector<Entry> fEntries;
  mutable std::size_t fNSorted = 0;  // the first so many are in order
  mutable FSHashIndex fIndex;        // of all entries, or empty
};
