// A data pass over records, one a case, taken in blocks: decides once per case on weight and
// target, then gives each predictor its column of the cases that remain.
//
// Cancel is polled for every block, which is shorter the more predictors there are, and for every
// predictor of it, so that the answer takes some milliseconds at most; what a cancelled pass has
// counted is of no use. Single records and blocks of the same cases give the same result to the
// last bit, and so does any number of threads: they share out the predictors of a block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/RecordIterator.h"
#include "common/Workers.h"
#include "feature/FSCancelInfo.h"
#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSCategorySort.h"
#include "feature/pass/FSTargetHistory.h"
#include "feature/pass/FSTargetView.h"

class FSCounts;
class FSSettings;
class FSStopwatch;
class IFSPredTargetAccum;

class FSRecordPass {
 public:
  // Starts nothing. All are borrowed.
  FSRecordPass(FSCounts& counts, const FSSettings& settings, bool withTarget,
               MCCommon::Workers& workers);

  // Takes at most maxRecords cases with a valid weight (negative: all). Progress is reported with
  // the watch's time.
  void Run(MCCommon::RecordIterator& source, int maxRecords, FSCancelInfo& cancel,
           const FSStopwatch& watch);

 private:
  // Returns the number of cases with a valid weight.
  int Take(const MCCommon::RecordBlock& block, FSCancelInfo& cancel);
  int SelectCases(const MCCommon::RecordBlock& block);
  // Takes all cases of a block, as they stand there; false when the target of one is missing or
  // negative, or a weight is not valid, or not a frequency.
  bool SelectAll(const double* weights, const double* targets, std::size_t cases);
  // Makes these columns those of the chosen cases.
  void LookAtCases(const double* weights, const double* targets);
  void MakeRoom(std::size_t cases);
  bool ReadWeight(const double* weights, std::size_t i, double& weight);
  bool IsValidTarget(double target) const;
  void Choose(std::size_t i, double weight, double target);
  void ShowChosen();
  // What a worker needs of its own in a block, apart from what others write.
  struct alignas(MCCommon::Workers::kLine) Room {
    std::int64_t fBlock = 0;  // in which it took a predictor last
    FSCaseBlock fCases;
    std::vector<std::uint8_t> fHasValid;  // by case: a predictor that the worker took is valid
    std::vector<double> fCells;
    FSWeightMemo fMemo;
    FSCategorySort fSort;
    FSTargetView fTarget;
  };

  // The room of a worker, furnished for the block.
  Room& Enter(std::size_t worker);
  void TakePredictors(const MCCommon::RecordBlock& block, FSCancelInfo& cancel);
  void TakePredictor(IFSPredTargetAccum& accumulator, const MCCommon::RecordBlock& block,
                     std::size_t column, Room& room);
  void TakeMissing(IFSPredTargetAccum& accumulator, const double* cells, Room& room);
  void JoinMarks();
  bool IsReserved(int column) const;
  const double* ChosenCells(const MCCommon::RecordBlock& block, std::size_t column,
                            Room& room) const;
  void CountCases();
  void CountTargets(const FSCaseBlock& cases);

  FSCounts& fCounts;
  const FSSettings& fSettings;
  bool fbWithTarget;
  bool fbWeighted;
  std::size_t fNChosen = 0;
  std::vector<std::uint32_t> fChosen;  // positions in the block
  std::vector<double> fWeights;
  const double* fpWeights = nullptr;  // those, or the block's own
  FSWeightTraits fWeightTraits{};
  bool fbUnitWeights = true;  // all weights of the pass so far are 1
  std::vector<double> fTargets;
  const double* fpTargets = nullptr;  // those, or the block's own
  int fHighest = -1;                  // of categorical targets: FSLoops::fFindHighest
  bool fbOrdinary = false;            // continuous targets are
  FSTargetHistory fTargetHistory;
  FSCaseBlock fCases;                   // the chosen ones
  std::vector<std::uint8_t> fHasValid;  // of the block, when all predictors were taken
  std::vector<std::size_t> fColumns;    // of the predictors
  std::int64_t fBlock = 0;              // of the pass, from 1 on
  MCCommon::Workers& fWorkers;
  std::vector<Room> fRooms;  // by worker
};
