// A caller's records as processed records: encodes them block by block, leaves out those without a
// valid target or weight, and counts what it left out.
//
// Never asks the source for more cases than it still may deliver, so a caller can feed one stream
// in several batches. Source and preparator stay the caller's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/RecordIterator.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/store/NBCodeBlock.h"
#include "naivebayes/store/NBDataPreparator.h"

class NBInternalAdapter : public MCCommon::RecordIterator {
 public:
  // nRecords limits the accepted records; below 0 there is no limit.
  NBInternalAdapter(MCCommon::RecordIterator& source, int nRecords, NBDataPreparator& preparator);

  bool HasMore() override;
  const MCCommon::Record* NextRecord() override;
  FailReason GetFailReason() const override;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override;

  // The next accepted cases as codes, without the detour over records; false at the end.
  // REQUIRES: not mixed with the record operations.
  bool NextCodes(NBCodeBlock& codes);

  // Records left out so far; their weight counts as far as it is valid.
  int GetExcludedCount() const { return fExcluded.fNRecords; }
  double GetWExcludedCount() const { return fExcluded.fWeight; }

  // The error that ended the pass (70004, 70010, 70012), or the first warning 70010.
  const MCNaive::MCStatus& GetStatus() const { return fStatus; }

 private:
  // Encodes the next source cases of which any are accepted; false at the end.
  bool Fetch(std::size_t maxCases, NBCodeBlock& codes);
  // Makes fvColumns hold the next accepted cases; false at the end.
  bool FetchColumns(std::size_t maxCases);
  // Which cases of a source block are accepted; fvTargets and fvWeights of all its cases.
  void Accept(const MCCommon::RecordBlock& block);
  void EncodeAccepted(const MCCommon::RecordBlock& block, NBCodeBlock& codes);
  // Makes codes out of range missing, and warns of the first.
  void ReplaceOutOfRange(int input, const double* values, std::size_t cases,
                         std::vector<std::int32_t>& codes);

  MCCommon::RecordIterator& fSource;
  NBDataPreparator& fPreparator;
  std::int64_t fNLeft;  // records that may still be accepted; below 0 without a limit
  std::int64_t fNSeen = 0;
  NBExcluded fExcluded;
  MCNaive::MCStatus fStatus;

  std::vector<std::size_t> fvAccepted;  // positions in the source block
  std::vector<std::vector<double>> fvColumns;
  std::vector<std::int32_t> fvTargets;
  NBCodeBlock fCodes;
  std::vector<double> fvWeights;
  std::size_t fNext = 0;   // of the cases in fvColumns
  std::size_t fCases = 0;  // in fvColumns
  MCCommon::RecordBlock fBlock;
  MCCommon::Record fCurRecord;
};
