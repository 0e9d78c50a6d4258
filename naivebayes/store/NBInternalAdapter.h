// A caller's records as processed records: encodes them block by block, leaves out those without a
// valid target or weight, and counts what it left out. The engine takes the codes; whoever wants
// records gets these one by one.
//
// Never asks the source for more cases than it still may deliver, so a caller can feed one stream
// in several batches. Source and preparator stay the caller's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/RecordIterator.h"
#include "naivebayes/MCStatus.h"
#include "naivebayes/store/NBCodeBuffer.h"
#include "naivebayes/store/NBCodeSource.h"
#include "naivebayes/store/NBDataPreparator.h"

class NBInternalAdapter : public MCCommon::RecordIterator, public NBCodeSource {
 public:
  // nRecords limits the accepted records; below 0 there is no limit.
  NBInternalAdapter(MCCommon::RecordIterator& source, int nRecords, NBDataPreparator& preparator);

  // REQUIRES: not mixed with the record operations.
  const NBCodeBlock* NextCodes() override;
  bool HasFailed() const override { return fStatus.IsError(); }

  bool HasMore() override;
  const MCCommon::Record* NextRecord() override;
  FailReason GetFailReason() const override;

  // Reads on to the end behind the last record that may be accepted, and counts those that would
  // have been left out.
  void CountRest();

  // Records left out so far; their weight counts as far as it is valid.
  int GetExcludedCount() const { return fExcluded.fNRecords; }
  double GetWExcludedCount() const { return fExcluded.fWeight; }

  // The error that ended the pass (70004, 70010, 70012), or the first warning 70010.
  const MCNaive::MCStatus& GetStatus() const { return fStatus; }

 private:
  // Whether the cases of a source block can be encoded; otherwise the pass is over.
  bool IsUsable(const MCCommon::RecordBlock& block);
  // Which cases of a source block are accepted; targets and weights of all its cases.
  void Accept(const MCCommon::RecordBlock& block);
  void EncodeAccepted(const MCCommon::RecordBlock& block);
  // The codes of an input for the accepted cases; whether some are out of range.
  bool EncodeInput(int input, const double* values, std::size_t cases);
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
  std::vector<char> fvOutOfRange;       // by input: some of its codes are
  NBCodeBuffer fBuffer;
  const NBCodeBlock* fpCodes = nullptr;  // which NextRecord gives out ...
  std::size_t fNext = 0;                 // ... from here on
  MCCommon::Record fCurRecord;
};
