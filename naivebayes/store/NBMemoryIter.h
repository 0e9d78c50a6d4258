// Records of doubles kept in memory, column by column, up to a given number: for callers who
// collect theirs before a run.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <vector>

#include "common/RecordIterator.h"

namespace MCNaive {

class NBMemoryIter : public MCCommon::MultiPassRecordIter {
 public:
  NBMemoryIter(int recordSize, int capacity);

  // False when the store is full. REQUIRES: the record has the store's record size.
  bool AddRecord(const MCCommon::Record& record);
  // Adds records until the store is full, the source is exhausted, or `limit` were taken; returns
  // how many were.
  int FillBuffer(MCCommon::RecordIterator& source, int limit);

  int GetCount() const { return static_cast<int>(fCount); }
  int GetCapacity() const { return static_cast<int>(fCapacity); }

  bool HasMore() override { return fIndCurRecord < fCount; }
  const MCCommon::Record* NextRecord() override;
  FailReason GetFailReason() const override;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override;
  bool NewPass() override;

  // As INBUserMissing says: records, and the place in them.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  std::size_t fCapacity;
  std::size_t fCount = 0;
  std::size_t fIndCurRecord = 0;
  std::vector<std::vector<double>> fvColumns;
  MCCommon::Record fCurRecord;
  MCCommon::RecordBlock fBlock;
};

}  // namespace MCNaive
