#include "naivebayes/store/NBMemoryIter.h"

#include <algorithm>

namespace MCNaive {

NBMemoryIter::NBMemoryIter(int recordSize, int capacity)
    : fCapacity(std::max(capacity, 0)), fvColumns(recordSize), fCurRecord(recordSize) {}

bool NBMemoryIter::AddRecord(const MCCommon::Record& record) {
  if (fCount == fCapacity) return false;
  for (std::size_t j = 0; j < fvColumns.size(); ++j) fvColumns[j].push_back(record[j]);
  ++fCount;
  return true;
}

int NBMemoryIter::FillBuffer(MCCommon::RecordIterator& source, int limit) {
  int taken = 0;
  while (taken < limit && fCount < fCapacity && source.HasMore()) {
    const MCCommon::Record* record = source.NextRecord();
    if (record == nullptr) break;
    AddRecord(*record);
    ++taken;
  }
  return taken;
}

const MCCommon::Record* NBMemoryIter::NextRecord() {
  if (!HasMore()) return nullptr;
  for (std::size_t j = 0; j < fvColumns.size(); ++j) fCurRecord[j] = fvColumns[j][fIndCurRecord];
  ++fIndCurRecord;
  return &fCurRecord;
}

MCCommon::RecordIterator::FailReason NBMemoryIter::GetFailReason() const {
  return fIndCurRecord < fCount ? kSuccess : kNoRecords;
}

const MCCommon::RecordBlock& NBMemoryIter::NextBlock(std::size_t maxCases) {
  const std::size_t cases = std::min(
      {maxCases, fCount - fIndCurRecord, MCCommon::RecordBlock::PreferredCases(fvColumns.size())});
  fBlock.Reset(fvColumns.size(), cases);
  for (std::size_t j = 0; j < fvColumns.size(); ++j) {
    fBlock.SetColumn(j, fvColumns[j].data() + fIndCurRecord);
  }
  fIndCurRecord += cases;
  return fBlock;
}

bool NBMemoryIter::NewPass() {
  fIndCurRecord = 0;
  return true;
}

}  // namespace MCNaive
