// A store of processed records seen without some of its columns: those of predictors that were
// dropped after the records had been stored.
#pragma once

#include <cstddef>
#include <vector>

#include "common/RecordIterator.h"

namespace MCNaive {

class NBColumnView : public MCCommon::MultiPassRecordIter {
 public:
  // Shows these columns of the store, which stays the caller's.
  NBColumnView(MCCommon::MultiPassRecordIter& store, std::vector<int> columns);

  bool HasMore() override { return fStore.HasMore(); }
  const MCCommon::Record* NextRecord() override;
  FailReason GetFailReason() const override { return fStore.GetFailReason(); }
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override;
  bool NewPass() override { return fStore.NewPass(); }

 private:
  MCCommon::MultiPassRecordIter& fStore;
  std::vector<int> fvColumns;
  MCCommon::Record fCurRecord;
  MCCommon::RecordBlock fBlock;
};

}  // namespace MCNaive
