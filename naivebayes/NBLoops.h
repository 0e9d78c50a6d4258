// The loops over the cells of training and scoring, for the instructions of the machine.
#pragma once

#include <cstddef>
#include <cstdint>

struct NBLoops {
  // EncodeCategory of every value. Returns the lowest code, at most 0.
  std::int32_t (*fEncode)(const double* values, std::size_t n, double end, std::int32_t* codes);

  // The cells of a grid that values fall into, (value - low) * scale cut off at 0 and `last`;
  // `last`
  // + 1 for missing ones.
  void (*fFindCells)(const double* values, std::size_t n, double low, double scale, double last,
                     std::int32_t* cells);

  // Counts pairs of a code, from -1 on, and a target in cell (code + 1) * targetCategories + target
  // of one of `tables` tables in turn (MCCommon::CountInTurn).
  void (*fTally)(const std::int32_t* codes, const std::int32_t* targets, std::size_t n,
                 int targetCategories, std::size_t tables, std::size_t cells,
                 std::uint32_t* counts);

  // For the instructions in use.
  static const NBLoops& InUse();
};
