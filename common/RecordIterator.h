// Streams of cases that a caller hands to an engine.
//
// An iterator gives cases one by one (NextRecord) or in blocks (NextBlock); the two may be mixed
// and continue where the other stopped. A caller who can only produce single records implements
// HasMore, NextRecord and GetFailReason; blocks are then filled from records by the default.
// An iterator is used by one thread at a time and does not throw.
#pragma once

#include <cstddef>
#include <memory>

#include "common/Record.h"
#include "common/RecordBlock.h"

namespace MCCommon {

class RecordIterator {
 public:
  // Why an iterator has nothing (more) to give. The values are part of the interface.
  enum FailReason { kSuccess = 0, kNoRecords = 1, kReadError = 3 };

  RecordIterator();
  RecordIterator(const RecordIterator&) = delete;
  RecordIterator& operator=(const RecordIterator&) = delete;
  virtual ~RecordIterator();

  // True when NextRecord() will give a record.
  virtual bool HasMore() = 0;

  // The next record, or null at the end and after a read error. It stays valid until the next call
  // of NextRecord, NextBlock or NewPass.
  virtual const Record* NextRecord() = 0;

  // kSuccess while records come, kNoRecords when the pass is exhausted (or was empty), kReadError
  // when the source failed.
  virtual FailReason GetFailReason() const = 0;

  // The next cases, at least one and at most maxCases (never more than RecordBlock::kMaxCases); a
  // block without cases means the end or a read error. The block and its columns stay valid until
  // the next call of NextRecord, NextBlock or NewPass.
  // REQUIRES: maxCases > 0; every record of the stream has the same size.
  virtual const RecordBlock& NextBlock(std::size_t maxCases);

 private:
  class BlockBuffer;
  std::unique_ptr<BlockBuffer> fpBuffer;  // only made when the default NextBlock is used
};

// A stream that can be read again from its first case, with the same cases in the same order.
class MultiPassRecordIter : public RecordIterator {
 public:
  // Goes back to the first case; false when the source cannot be read again.
  [[nodiscard]] virtual bool NewPass() = 0;
};

}  // namespace MCCommon
