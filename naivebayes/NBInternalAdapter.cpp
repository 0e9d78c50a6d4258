#include "naivebayes/NBInternalAdapter.h"

#include <algorithm>

#include "common/MissingValue.h"
#include "naivebayes/INBEncoder.h"

using MCCommon::RecordBlock;

NBInternalAdapter::NBInternalAdapter(MCCommon::RecordIterator& source, int nRecords,
                                     NBDataPreparator& preparator)
    : fSource(source),
      fPreparator(preparator),
      fNLeft(nRecords),
      fvColumns(preparator.GetProcessedSize()),
      fCurRecord(preparator.GetProcessedSize()) {}

void NBInternalAdapter::Accept(const RecordBlock& block) {
  const std::size_t cases = block.Cases();
  fvCodes.resize(cases);
  fvWeights.assign(cases, 1.0);
  const double* targets = block.Column(fPreparator.GetTargetColumn());
  fPreparator.EncodeTargets(targets, cases, fvCodes.data());
  const int weight = fPreparator.GetWeightColumn();
  if (weight >= 0) fPreparator.EncodeWeights(block.Column(weight), cases, fvWeights.data());
  fvAccepted.clear();
  NBCancelInfo& cancel = fPreparator.GetCancelInfo();
  for (std::size_t i = 0; i < cases && !cancel.IsCancel(); ++i, ++fNSeen) {
    if (fvWeights[i] == MCMV::gMissingValue) {
      ++fExcluded.fNRecords;
    } else if (fvCodes[i] == INBEncoder::kMissingCode) {
      ++fExcluded.fNRecords;
      fExcluded.fWeight += fvWeights[i];
    } else if (fvCodes[i] == NBDataPreparator::kOutOfRange) {
      fStatus =
          fPreparator.MakeRangeStatus(false, fNSeen, targets[i], fPreparator.GetTargetCategories());
      return;
    } else {
      fvAccepted.push_back(i);
    }
  }
}

void NBInternalAdapter::EncodeInputColumn(int input, const double* values, std::size_t cases) {
  fvCodes.resize(cases);
  fPreparator.EncodeInputs(input, values, cases, fvCodes.data());
  auto& column = fvColumns[fPreparator.GetFirstInput() + input];
  column.resize(fvAccepted.size());
  std::int32_t lowest = 0;
  if (fvAccepted.size() == cases) {
    for (std::size_t i = 0; i < cases; ++i) {
      lowest = std::min(lowest, fvCodes[i]);
      column[i] = fvCodes[i];
    }
  } else {
    for (std::size_t n = 0; n < fvAccepted.size(); ++n) {
      lowest = std::min(lowest, fvCodes[fvAccepted[n]]);
      column[n] = fvCodes[fvAccepted[n]];
    }
  }
  if (lowest == NBDataPreparator::kOutOfRange) ReplaceOutOfRange(input, values, cases);
}

void NBInternalAdapter::ReplaceOutOfRange(int input, const double* values, std::size_t cases) {
  auto& column = fvColumns[fPreparator.GetFirstInput() + input];
  for (std::size_t n = 0; n < fvAccepted.size(); ++n) {
    if (column[n] != NBDataPreparator::kOutOfRange) continue;
    column[n] = INBEncoder::kMissingCode;
    if (!fStatus.IsOK()) continue;
    const std::size_t i = fvAccepted[n];
    fStatus = fPreparator.MakeRangeStatus(true, fNSeen - static_cast<std::int64_t>(cases - i),
                                          values[i], fPreparator.GetInputCategories(input));
  }
}

void NBInternalAdapter::EncodeAccepted(const RecordBlock& block) {
  fvColumns[0].resize(fvAccepted.size());
  for (std::size_t n = 0; n < fvAccepted.size(); ++n) fvColumns[0][n] = fvCodes[fvAccepted[n]];
  if (fPreparator.GetWeightColumn() >= 0) {
    fvColumns[1].resize(fvAccepted.size());
    for (std::size_t n = 0; n < fvAccepted.size(); ++n) fvColumns[1][n] = fvWeights[fvAccepted[n]];
  }
  for (int j = 0; j < fPreparator.GetInputSize(); ++j) {
    EncodeInputColumn(j, block.Column(fPreparator.GetInputColumn(j)), block.Cases());
  }
}

bool NBInternalAdapter::Fetch(std::size_t maxCases) {
  fNext = fCases = 0;
  while (fCases == 0 && fNLeft != 0 && !fStatus.IsError()) {
    if (fPreparator.GetCancelInfo().IsCancel()) return false;
    const std::size_t wanted =
        fNLeft < 0 ? maxCases : std::min(maxCases, static_cast<std::size_t>(fNLeft));
    const RecordBlock& block = fSource.NextBlock(wanted);
    if (block.Cases() == 0) {
      if (fSource.GetFailReason() == kReadError) fStatus = MCNaive::Error(MCNaive::kSourceFailed);
      return false;
    }
    if (static_cast<int>(block.Columns()) < fPreparator.GetOriginalSize()) {
      fStatus = MCNaive::Error(MCNaive::kWrongRecordSize);
      return false;
    }
    Accept(block);
    EncodeAccepted(block);
    fCases = fvAccepted.size();
    if (fNLeft > 0) fNLeft -= static_cast<std::int64_t>(fCases);
  }
  return fCases > 0;
}

bool NBInternalAdapter::HasMore() { return fNext < fCases || Fetch(RecordBlock::kMaxCases); }

const MCCommon::Record* NBInternalAdapter::NextRecord() {
  if (!HasMore()) return nullptr;
  for (std::size_t j = 0; j < fvColumns.size(); ++j) fCurRecord[j] = fvColumns[j][fNext];
  ++fNext;
  return &fCurRecord;
}

const RecordBlock& NBInternalAdapter::NextBlock(std::size_t maxCases) {
  if (fNext == fCases) Fetch(std::min(maxCases, RecordBlock::kMaxCases));
  const std::size_t cases = std::min(maxCases, fCases - fNext);
  fBlock.Reset(fvColumns.size(), cases);
  for (std::size_t j = 0; j < fvColumns.size(); ++j) {
    fBlock.SetColumn(j, fvColumns[j].data() + fNext);
  }
  fNext += cases;
  return fBlock;
}

MCCommon::RecordIterator::FailReason NBInternalAdapter::GetFailReason() const {
  if (fStatus.IsError()) return kReadError;
  return fNext < fCases ? kSuccess : kNoRecords;
}
