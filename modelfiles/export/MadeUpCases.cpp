#include "modelfiles/export/MadeUpCases.h"

#include <new>

#include "common/MissingValue.h"
#include "common/Record.h"
#include "naivebayes/INBAlgorithm.h"

namespace MCModelFiles {

namespace {

// The upper end, which is where bins are told apart; of the last one, what the data went up to.
double NumberIn(const ScoringInput& input, const ScoringInterval& interval) {
  const bool isWithin = input.fHigh > interval.fAbove && input.fHigh <= interval.fUpTo;
  return isWithin ? input.fHigh : interval.fUpTo;
}

}  // namespace

std::size_t MadeUpCases::Draw(std::size_t below) {
  fState = fState * 6364136223846793005U + 1442695040888963407U;
  return static_cast<std::size_t>((fState >> 33U) % below);
}

MadeUpCase MadeUpCases::Next() {
  MadeUpCase made{{}, NBOutput(static_cast<int>(fTables.GetNClasses()))};
  MCCommon::Record record(fTables.fInputs.size());
  for (std::size_t j = 0; j < fTables.fInputs.size(); ++j) {
    const ScoringInput& input = fTables.fInputs[j];
    const std::vector<ScoringInterval> intervals =
        input.fbBinned ? IntervalsOf(input) : std::vector<ScoringInterval>();
    const std::size_t rows = input.fbBinned ? intervals.size() : input.GetNRows();
    const std::size_t row = Draw(rows + 1);
    auto& value = made.fValues.emplace_back();
    record[j] = KOVA_SystemMissing;
    if (row == rows) continue;
    record[j] = input.fbBinned ? NumberIn(input, intervals[row]) : static_cast<double>(row);
    if (input.fbTexts) {
      value = input.fTexts[row];
    } else {
      value = input.fbBinned ? record[j] : input.fNumbers[row];
    }
  }
  if (fModel.Score(record, made.fScores).GetErrorCode() == MCNaive::kNoMemory) {
    throw std::bad_alloc();
  }
  return made;
}

}  // namespace MCModelFiles
