#include "common/RecordIterator.h"

#include <algorithm>
#include <vector>

namespace MCCommon {

// Columns filled from single records, each column in one stretch of a common buffer.
class RecordIterator::BlockBuffer {
 public:
  const RecordBlock& Fill(RecordIterator& source, std::size_t maxCases) {
    fBlock.Reset(0, 0);
    if (!source.HasMore()) return fBlock;
    const Record* record = source.NextRecord();
    if (record == nullptr) return fBlock;
    const std::size_t columns = record->Size();
    const std::size_t capacity = std::min(maxCases, RecordBlock::PreferredCases(columns));
    fValues.resize(columns * capacity);
    std::size_t cases = 0;
    while (record != nullptr) {
      for (std::size_t j = 0; j < columns; ++j) fValues[j * capacity + cases] = (*record)[j];
      if (++cases == capacity || !source.HasMore()) break;
      record = source.NextRecord();
    }
    fBlock.Reset(columns, cases);
    for (std::size_t j = 0; j < columns; ++j) fBlock.SetColumn(j, &fValues[j * capacity]);
    return fBlock;
  }

 private:
  std::vector<double> fValues;
  RecordBlock fBlock;
};

RecordIterator::RecordIterator() = default;
RecordIterator::~RecordIterator() = default;

const RecordBlock& RecordIterator::NextBlock(std::size_t maxCases) {
  if (!fpBuffer) fpBuffer = std::make_unique<BlockBuffer>();
  return fpBuffer->Fill(*this, maxCases);
}

}  // namespace MCCommon
