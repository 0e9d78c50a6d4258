// Columns of random numbers in memory, handed out as blocks without copying.
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include "common/RecordIterator.h"

namespace InMemory {

// So many categories at random, or values for 0 of them.
inline std::vector<double> Column(int cases, int categories, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<double> column(static_cast<std::size_t>(cases));
  for (double& value : column) {
    value = categories > 0 ? random() % static_cast<unsigned>(categories) : random() * 0x1p-32;
  }
  return column;
}

struct Input {
  std::vector<bool> fCategorical;  // predictors
  bool fbCatTarget;
  std::size_t fBlock;                         // cases
  std::vector<std::vector<double>> fColumns;  // the target comes first
  std::size_t fTimes = 1;                     // over, one after another
};

inline Input Table(int cases, int targetCategories, const std::vector<int>& predictorCategories,
                   std::size_t block) {
  Input input{{}, targetCategories > 0, block, {Column(cases, targetCategories, 1)}};
  for (const int categories : predictorCategories) {
    input.fCategorical.push_back(categories > 0);
    const auto seed = static_cast<unsigned>(input.fColumns.size()) + 1;
    input.fColumns.push_back(Column(cases, categories, seed));
  }
  return input;
}

class Blocks : public MCCommon::MultiPassRecordIter {
 public:
  explicit Blocks(const Input& input)
      : fInput(input), fLength(input.fColumns[0].size()), fEnd(fLength * input.fTimes) {}
  bool HasMore() override { return fNext < fEnd; }
  const MCCommon::Record* NextRecord() override { return nullptr; }  // blocks only
  FailReason GetFailReason() const override { return fNext < fEnd ? kSuccess : kNoRecords; }
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t at = fNext % fLength;
    const std::size_t n =
        fNext < fEnd ? std::min({maxCases, fInput.fBlock, fLength - at}) : std::size_t{0};
    fBlock.Reset(fInput.fColumns.size(), n);
    for (std::size_t j = 0; j < fInput.fColumns.size(); ++j) {
      fBlock.SetColumn(j, fInput.fColumns[j].data() + at);
    }
    fNext += n;
    return fBlock;
  }
  bool NewPass() override {
    fNext = 0;
    return true;
  }

 private:
  const Input& fInput;
  std::size_t fLength;
  std::size_t fEnd;
  std::size_t fNext = 0;
  MCCommon::RecordBlock fBlock;
};

}  // namespace InMemory
