// Small tables for the engine's tests: columns of doubles, handed out as records or as blocks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "common/RecordIterator.h"

using Table = std::vector<std::vector<double>>;

// Record by record; blocks come from the default of the base class.
class RecordsOf : public MCCommon::RecordIterator {
 public:
  explicit RecordsOf(const Table& table) : fTable(table), fRecord(table.size()) {}
  bool HasMore() override { return fNext < fTable[0].size(); }
  const MCCommon::Record* NextRecord() override {
    if (!HasMore()) return nullptr;
    for (std::size_t j = 0; j < fTable.size(); ++j) fRecord[j] = fTable[j][fNext];
    ++fNext;
    return &fRecord;
  }
  FailReason GetFailReason() const override { return kSuccess; }
  const MCCommon::RecordBlock& NextBlock(std::size_t) override {
    return RecordIterator::NextBlock(1);
  }

 protected:
  const Table& fTable;
  std::size_t fNext = 0;

 private:
  MCCommon::Record fRecord;
};

// Blocks of at most `length` cases that show the columns themselves.
class BlocksOf : public RecordsOf {
 public:
  BlocksOf(const Table& table, std::size_t length) : RecordsOf(table), fLength(length) {}
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override {
    const std::size_t n = std::min({fLength, maxCases, fTable[0].size() - fNext});
    fBlock.Reset(fTable.size(), n);
    for (std::size_t j = 0; j < fTable.size(); ++j) fBlock.SetColumn(j, fTable[j].data() + fNext);
    fNext += n;
    return fBlock;
  }

 private:
  std::size_t fLength;
  MCCommon::RecordBlock fBlock;
};
