// What all predictors share of the target in a block of cases of weight 1: which cases are of which
// category; the steps and sums of a continuous target. Worked out once a block.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSOpenGroup.h"

class FSTargetView {
 public:
  // Of the cases of a block, in the order of the pass. What the block is shown holds until the next
  // call.
  void ShowCategories(const std::vector<int>& categories, FSCaseBlock& block);
  void ShowValues(const std::vector<double>& values, FSCaseBlock& block);
  // Of the block that was shown last.
  const std::vector<FSTargetRun>& GetRuns() const { return fRuns; }
  const std::vector<std::uint32_t>& GetOthers() const { return fOthers; }

 private:
  void SortByCategory(const std::vector<int>& categories);
  std::size_t AddPiece(const std::vector<double>& values, std::size_t begin);

  // A categorical target.
  std::vector<std::uint32_t> fOrder;
  std::vector<FSTargetRun> fRuns;
  std::vector<std::uint32_t> fOthers;
  std::array<std::size_t, kFSSmallCategories> fPlaces{};
  int fSide = 0;
  bool fbFewCategories = true;
  // A continuous one.
  std::int64_t fNCases = 0;
  bool fbOrdinary = true;  // all values so far
  FSOpenGroup fOpen;
  std::vector<double> fSteps;
  std::vector<FSTargetPiece> fPieces;
};
