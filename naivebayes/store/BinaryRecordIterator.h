// Processed records in a temporary file: one after another, each as doubles in the machine's own
// representation, without a header.
//
// The iterator owns the open file and closes it. It removes nothing: the file's name is gone before
// the iterator is made (see NBTempFile), and whatever stands there later is not ours.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "common/RecordIterator.h"

namespace MCNaive {

class BinaryRecordIterator : public MCCommon::MultiPassRecordIter {
 public:
  // Starts at the file's first record. A null file is a read error, and says so on standard error.
  BinaryRecordIterator(std::FILE* file, int recordSize, const std::string& fileName);
  ~BinaryRecordIterator() override;

  // The name that the file was made under.
  const std::string& GetFileName() const { return fFileName; }

  bool HasMore() override { return fStatus == kSuccess; }
  const MCCommon::Record* NextRecord() override;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override;
  FailReason GetFailReason() const override { return fStatus; }
  bool NewPass() override;

 private:
  // Reads the next records, once those before are used up, so that HasMore can answer.
  void ReadAhead();
  // Passes over so many records read.
  void Advance(std::size_t records);

  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::unique_ptr<std::FILE, Closer> fpFile;
  std::string fFileName;
  std::size_t fRecordSize;
  std::vector<double> fvAhead;  // records read, one after another
  std::size_t fNext = 0;        // of them
  std::size_t fNAhead = 0;
  bool fbTorn = false;  // a part of a record stood behind them
  std::vector<double> fvColumns;
  MCCommon::RecordBlock fBlock;
  MCCommon::Record fCurRecord;
  FailReason fStatus;
};

}  // namespace MCNaive
