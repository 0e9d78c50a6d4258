// Which columns lack their values together: how many cases lack which set of columns, counted in
// one pass. A user-missing value is a missing one.
//
// Memory: up to kMostPatterns sets of columns, and two words a case of a batch. More sets than that
// are not all counted: the rarest are let go whenever there is no room, so that a count may be too
// small, by no more than it says. What was counted from the first case on is exact. The result
// depends on the order of the cases, and on nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/data/ITable.h"

namespace MCCommon {
class Workers;
}

namespace PredSelect {

class MissingPatterns {
 public:
  static constexpr std::size_t kMostPatterns = 1024;

  struct Pattern {
    std::vector<int> fColumns;  // that lack a value, ascending
    std::int64_t fNCases = 0;
    std::int64_t fNMore = 0;  // so many cases may have come before they were counted
  };

  // Borrows the variables, one for each column of the batches.
  explicit MissingPatterns(std::vector<const KOVA_Variable*> variables);

  void Observe(const MCHost::TableBatch& batch, MCCommon::Workers& workers);

  // The n most frequent, of equal ones that which came first.
  std::vector<Pattern> MostFrequent(std::size_t n) const;

  // How many sets were met: exact, unless some had to be let go.
  std::size_t Count() const { return fCounted.size(); }
  bool IsExact() const { return fNLost == 0; }

 private:
  // A set of columns: what each column stands for, one by one, in two words.
  using Key = std::pair<std::uint64_t, std::uint64_t>;
  struct HashOfKey {
    std::size_t operator()(const Key& key) const { return key.first; }
  };
  struct Counted {
    Pattern fPattern;
    std::uint64_t fFirst = 0;  // number of the pattern, in the order of their coming
  };

  static Key KeyOf(std::size_t column);
  static bool IsBefore(const Counted& left, const Counted& right);

  void LearnTexts(const MCHost::TableBatch& batch);
  bool IsMissing(std::size_t column, const MCHost::ColumnView& view, std::size_t i) const;
  void AddColumn(std::size_t column, const MCHost::ColumnView& view, std::size_t from,
                 std::size_t to);
  void Count(const MCHost::TableBatch& batch, std::size_t i);
  void LetGo();

  std::vector<const KOVA_Variable*> fVariables;
  std::vector<std::vector<char>> fMissingTexts;  // by code, of variables with user-missing texts
  std::vector<Key> fKeys;                        // of the cases of a batch
  std::unordered_map<Key, Counted, HashOfKey> fCounted;
  std::uint64_t fNMet = 0;
  std::int64_t fNLost = 0;  // no pattern that is not counted has come more often
};

}  // namespace PredSelect
