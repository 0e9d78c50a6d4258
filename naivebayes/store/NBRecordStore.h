// The codes of processed records that are read anew in every pass: those of a temporary file, or a
// caller's own. Their doubles become codes here, a block at a time, and nowhere behind.
#pragma once

#include <memory>
#include <vector>

#include "common/RecordIterator.h"
#include "naivebayes/store/NBCodeBuffer.h"
#include "naivebayes/store/NBCodeStore.h"

class NBRecordStore : public NBCodeStore {
 public:
  // Records of a target, a weight if there is one, and so many inputs, which are now at their first
  // case; they stay the caller's, or become the store's. Those without a valid target or with a
  // weight that is not above 0 are left out.
  NBRecordStore(MCCommon::MultiPassRecordIter& records, int inputs, bool hasWeight);
  NBRecordStore(std::unique_ptr<MCCommon::MultiPassRecordIter> records, int inputs, bool hasWeight);

  const NBCodeBlock* NextCodes() override;
  bool HasFailed() const override;
  [[nodiscard]] bool NewPass() override { return fRecords.NewPass(); }
  void KeepInputs(const std::vector<int>& inputs) override;

 private:
  void Append(const MCCommon::RecordBlock& records);

  std::unique_ptr<MCCommon::MultiPassRecordIter> fpOwned;
  MCCommon::MultiPassRecordIter& fRecords;
  bool fbHasWeight;
  std::size_t fBlockCases;
  std::vector<std::size_t> fvColumns;  // of the inputs, in a record
  std::vector<std::size_t> fvAccepted;
  NBCodeBuffer fBuffer;
};
