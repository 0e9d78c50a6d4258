#include "host/cases/UACaseScan.h"

#include <algorithm>
#include <utility>

#include "common/RecordBlock.h"

UACaseScan::UACaseScan(std::unique_ptr<MCHost::ITableScan> scan, int nRecordVars, int pass)
    : fpScan(std::move(scan)),
      fPass(pass),
      fMaxCases(MCCommon::RecordBlock::PreferredCases(static_cast<std::size_t>(nRecordVars))),
      fColumns(static_cast<std::size_t>(nRecordVars)),
      fBuffers(static_cast<std::size_t>(nRecordVars)) {}

bool UACaseScan::NextChunk() {
  fOffset += fNCases;
  fFirstCase += static_cast<std::int64_t>(fNCases);
  fNCases = 0;
  fCase = 0;
  if (fpBatch == nullptr || fOffset >= fpBatch->fNCases) {
    fOffset = 0;
    fpBatch = fpScan->Next();
    if (fpBatch == nullptr) return false;
  }
  fNCases = std::min(fMaxCases, fpBatch->fNCases - fOffset);
  return true;
}

MCHost::ColumnView UACaseScan::Raw(std::size_t scanColumn) const {
  MCHost::ColumnView view = fpBatch->fColumns[scanColumn];
  if (view.fpNumbers != nullptr) view.fpNumbers += fOffset;
  if (view.fpCodes != nullptr) view.fpCodes += fOffset;
  return view;
}

double* UACaseScan::Buffer(std::size_t recordVar) {
  if (fBuffers[recordVar].empty()) fBuffers[recordVar].resize(fMaxCases);
  return fBuffers[recordVar].data();
}
