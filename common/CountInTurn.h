// Counting occurrences, fast: in several tables in turn, so that no addition waits for the one
// before when a place comes twice.
#pragma once

#include <cstddef>
#include <cstdint>

namespace MCCommon {

// Tables between which to take turns, when there is room for them.
inline constexpr std::size_t kTablesInTurn = 4;

// Counts places[0] .. places[n - 1], each below `cells`, in `tables` tables of that size: 1 or
// kTablesInTurn.
inline void CountInTurn(const std::int32_t* places, std::size_t n, std::size_t tables,
                        std::size_t cells, std::uint32_t* counts) {
  std::size_t i = 0;
  if (tables == kTablesInTurn) {
    for (; i + kTablesInTurn <= n; i += kTablesInTurn) {
      ++counts[places[i]];
      ++counts[cells + places[i + 1]];
      ++counts[2 * cells + places[i + 2]];
      ++counts[3 * cells + places[i + 3]];
    }
  }
  for (; i < n; ++i) ++counts[places[i]];
}

}  // namespace MCCommon
