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

  // The odds of n cases against their own target, with one more input: `others` of the cases times
  // the input's `ratios` (NBOddsRatios), summed over the other targets. The arrays of the others
  // stand `stride` apart, those of the ratios `cells`. Returns the largest. REQUIRES: n mod 8 = 0;
  // 2 to 4 targets.
  double (*fFindOdds)(std::size_t n, const std::int32_t* codes, const std::int32_t* targets,
                      int targetCategories, const double* others, std::size_t stride,
                      const double* ratios, std::size_t cells, double* odds);

  // Multiplies 1 + odds up in eight places in turn, each of which holds its product less 1.
  // REQUIRES: n mod 8 = 0.
  void (*fMultiplyUp)(std::size_t n, const double* odds, double* products);

  // What an input does to the odds of cases in lanes: factors by code and slot, and, where there
  // are inverses, these by row. Numbers of lanes stand side by side, those of slots behind each
  // other. REQUIRES: lanes mod fNLanes = 0; 1 to 3 slots where there is no inverse.
  struct LaneTables {
    const double* fpFactors;
    const double* fpInverse;  // may be null
    std::size_t fSlots;
    std::size_t fLanes;
  };

  // The same for n cases in lanes, with one more input, in kPlaces places in turn: the odds of a
  // case and lane are the sum over its slots of odds times factors, times the inverse. Of each case
  // the code of its factors and the row of its inverses.
  void (*fMultiplyUpLanes)(std::size_t n, const LaneTables& tables, const double* odds,
                           const std::size_t* codes, const std::size_t* rows, double* products);

  // Takes the input into the odds of n cases: those below `least` become 0, those above `most`
  // that.
  void (*fMultiplyOdds)(std::size_t n, const LaneTables& tables, const std::size_t* codes,
                        const std::size_t* rows, double least, double most, double* odds);

  static constexpr std::size_t kPlaces = 8;
  std::size_t fNLanes;  // of a vector

  // For the instructions in use.
  static const NBLoops& InUse();
};
