#include "naivebayes/store/NBColumnView.h"

#include <utility>

namespace MCNaive {

NBColumnView::NBColumnView(MCCommon::MultiPassRecordIter& store, std::vector<int> columns)
    : fStore(store), fvColumns(std::move(columns)), fCurRecord(fvColumns.size()) {}

const MCCommon::Record* NBColumnView::NextRecord() {
  const MCCommon::Record* record = fStore.NextRecord();
  if (record == nullptr) return nullptr;
  for (std::size_t j = 0; j < fvColumns.size(); ++j) fCurRecord[j] = (*record)[fvColumns[j]];
  return &fCurRecord;
}

const MCCommon::RecordBlock& NBColumnView::NextBlock(std::size_t maxCases) {
  const MCCommon::RecordBlock& block = fStore.NextBlock(maxCases);
  fBlock.Reset(block.Cases() == 0 ? 0 : fvColumns.size(), block.Cases());
  for (std::size_t j = 0; j < fBlock.Columns(); ++j) {
    fBlock.SetColumn(j, block.Column(fvColumns[j]));
  }
  return fBlock;
}

}  // namespace MCNaive
