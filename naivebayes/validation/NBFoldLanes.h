// Forward steps on many training samples at once, each of all cases but those of a fold: a lane.
//
// Every case is looked at once for all lanes, whose numbers stand side by side, so that a step of
// ten lanes costs a few times one step, not ten times. For each case and lane the odds against the
// case's own category are kept, as products of the lane's estimates; a case that a lane leaves out
// has odds of 0 there, which add nothing. Odds beyond 1e250 count as 1e250.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/NBLoops.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/store/NBCodeStore.h"
#include "naivebayes/validation/NBFoldModel.h"
#include "naivebayes/validation/NBLaneVector.h"

class NBFoldLanes {
 public:
  // The samples leave out their fold: for each lane its model and, by case, whose fold is which
  // number. All stay the caller's.
  struct Lane {
    const NBFoldModel* fpModel;
    const std::vector<std::int32_t>* fpFolds;  // by case
    std::int32_t fFold;
  };

  NBFoldLanes(const std::vector<Lane>& lanes, NBCodeStore& records, std::size_t cases,
              NBCancelInfo& cancel, MCCommon::Workers& workers);

  // How many lanes go together, by the cases and categories of the target: as many as memory of
  // `bytes` has room for, at least one vector of them.
  static std::size_t MostLanes(std::size_t cases, std::size_t categories, std::size_t bytes);

  // Takes an input into the subset of each lane; -1 for none.
  void Enter(const std::vector<int>& inputs);

  // For each of the inputs the sum over the cases of w * log(1 + odds) with it, with no more input
  // for -1: out[c][lane]. False
  // when the records could not be read. After a cancel it is of no use.
  [[nodiscard]] bool SumTerms(const std::vector<int>& inputs,
                              std::vector<std::vector<double>>& out);

 private:
  // What an input does to the odds, by its code (from -1 on) and lane: the factor of each category
  // of the target, or, where there are few, by the own category the ratio of each other's to it.
  struct Table {
    NBLaneVector fFactors;
    NBLaneVector fInverse;  // of the own category's factor; empty for ratios
  };
  // A sum of logarithms a lane: products of 1 + odds, less 1, in a few places in turn.
  struct Sums {
    NBLaneVector fProducts;
    NBLaneVector fBefore;        // those before a round
    std::vector<NBSum> fTotals;  // by lane
  };
  struct Chunk;
  // Where the cases of a round are in a table: their codes from 0 on, alone and with their target.
  static constexpr std::size_t kRound = 32 * NBLoops::kPlaces;
  struct Rows {
    std::array<std::size_t, kRound> fCodes;
    std::array<std::size_t, kRound> fRows;
  };

  Table MakeTable(int input, const std::vector<char>& isEntered) const;
  void SetOdds(const NBCodeBlock& codes, std::size_t first);
  void Multiply(const Table& table, const Chunk& chunk, int input);
  NBLoops::LaneTables TablesOf(const Table& table) const;
  // Of cases of a chunk, from the first on, with codes of the input; 0 for -1.
  void FindRows(const Chunk& chunk, std::size_t first, std::size_t n, int input, Rows& rows) const;
  // What the factors of a table go by.
  const std::size_t* CodesOf(const Rows& rows) const;
  void AddTerms(const Table& table, const Chunk& chunk, int input, Sums& sums) const;
  void AddRound(const Table& table, const Chunk& chunk, std::size_t first, std::size_t n,
                const Rows& rows, Sums& sums) const;
  void AddOneByOne(const Table& table, const Chunk& chunk, std::size_t first, std::size_t n,
                   const Rows& rows, Sums& sums) const;
  void Flush(Sums& sums) const;
  // Calls visit for the chunks of a pass, as long as it is true.
  template <class Visit>
  [[nodiscard]] bool ForEachChunk(Visit visit);

  std::vector<Lane> fvLanes;
  NBCodeStore& fRecords;
  NBCancelInfo& fCancel;
  MCCommon::Workers& fWorkers;
  std::size_t fNTargets;
  bool fbRatios;
  std::size_t fNSlots;  // numbers a case and lane: other categories, or all with 0 for the own
  std::size_t fNLanes;  // up to a whole vector
  NBLaneVector fvOdds;  // by case, slot and lane
  std::vector<Table> fvTables;  // by input, and behind them that of none
};
