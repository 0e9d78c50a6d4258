#include "naivebayes/store/NBInternalAdapter.h"

#include <algorithm>

#include "common/MissingValue.h"
#include "naivebayes/encoders/INBEncoder.h"

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
  fvTargets.resize(cases);
  fvWeights.assign(cases, 1.0);
  const double* targets = block.Column(fPreparator.GetTargetColumn());
  fPreparator.EncodeTargets(targets, cases, fvTargets.data());
  const int weight = fPreparator.GetWeightColumn();
  if (weight >= 0) fPreparator.EncodeWeights(block.Column(weight), cases, fvWeights.data());
  fvAccepted.clear();
  NBCancelInfo& cancel = fPreparator.GetCancelInfo();
  for (std::size_t i = 0; i < cases && !cancel.IsCancel(); ++i, ++fNSeen) {
    if (fvWeights[i] == MCMV::gMissingValue) {
      ++fExcluded.fNRecords;
    } else if (fvTargets[i] == INBEncoder::kMissingCode) {
      ++fExcluded.fNRecords;
      fExcluded.fWeight += fvWeights[i];
    } else if (fvTargets[i] == NBDataPreparator::kOutOfRange) {
      fStatus =
          fPreparator.MakeRangeStatus(false, fNSeen, targets[i], fPreparator.GetTargetCategories());
      return;
    } else {
      fvAccepted.push_back(i);
    }
  }
}

namespace {

// Keeps the values at these ascending positions.
template <typename T>
void Compact(std::vector<T>& values, const std::vector<std::size_t>& positions) {
  if (positions.size() < values.size()) {
    for (std::size_t n = 0; n < positions.size(); ++n) values[n] = values[positions[n]];
    values.resize(positions.size());
  }
}

}  // namespace

void NBInternalAdapter::EncodeAccepted(const RecordBlock& block, NBCodeBlock& codes) {
  const std::size_t cases = block.Cases();
  codes.SetInputs(fPreparator.GetInputSize());
  codes.TargetColumn() = fvTargets;
  codes.WeightColumn() = fvWeights;
  Compact(codes.TargetColumn(), fvAccepted);
  Compact(codes.WeightColumn(), fvAccepted);
  for (int j = 0; j < fPreparator.GetInputSize(); ++j) {
    std::vector<std::int32_t>& column = codes.CodeColumn(j);
    const double* values = block.Column(fPreparator.GetInputColumn(j));
    column.resize(cases);
    fPreparator.EncodeInputs(j, values, cases, column.data());
    Compact(column, fvAccepted);
    std::int32_t lowest = 0;
    for (std::int32_t code : column) lowest = std::min(lowest, code);
    if (lowest == NBDataPreparator::kOutOfRange) ReplaceOutOfRange(j, values, cases, column);
  }
}

void NBInternalAdapter::ReplaceOutOfRange(int input, const double* values, std::size_t cases,
                                          std::vector<std::int32_t>& codes) {
  for (std::size_t n = 0; n < codes.size(); ++n) {
    if (codes[n] != NBDataPreparator::kOutOfRange) continue;
    codes[n] = INBEncoder::kMissingCode;
    if (!fStatus.IsOK()) continue;
    const std::size_t i = fvAccepted[n];
    fStatus = fPreparator.MakeRangeStatus(true, fNSeen - static_cast<std::int64_t>(cases - i),
                                          values[i], fPreparator.GetInputCategories(input));
  }
}

bool NBInternalAdapter::Fetch(std::size_t maxCases, NBCodeBlock& codes) {
  while (fNLeft != 0 && !fStatus.IsError() && !fPreparator.GetCancelInfo().IsCancel()) {
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
    EncodeAccepted(block, codes);
    if (fNLeft > 0) fNLeft -= static_cast<std::int64_t>(codes.Cases());
    if (codes.Cases() > 0) return true;
  }
  return false;
}

bool NBInternalAdapter::FetchColumns(std::size_t maxCases) {
  fNext = fCases = 0;
  if (!Fetch(maxCases, fCodes)) return false;
  fCases = fCodes.Cases();
  const auto first = static_cast<std::size_t>(fPreparator.GetFirstInput());
  fvColumns[0].assign(fCodes.Targets(), fCodes.Targets() + fCases);
  if (first == 2) fvColumns[1].assign(fCodes.Weights(), fCodes.Weights() + fCases);
  for (std::size_t j = first; j < fvColumns.size(); ++j) {
    const std::int32_t* codes = fCodes.Codes(static_cast<int>(j - first));
    fvColumns[j].assign(codes, codes + fCases);
  }
  return true;
}

bool NBInternalAdapter::NextCodes(NBCodeBlock& codes) {
  return Fetch(RecordBlock::kMaxCases, codes);
}

bool NBInternalAdapter::HasMore() { return fNext < fCases || FetchColumns(RecordBlock::kMaxCases); }

const MCCommon::Record* NBInternalAdapter::NextRecord() {
  if (!HasMore()) return nullptr;
  for (std::size_t j = 0; j < fvColumns.size(); ++j) fCurRecord[j] = fvColumns[j][fNext];
  ++fNext;
  return &fCurRecord;
}

const RecordBlock& NBInternalAdapter::NextBlock(std::size_t maxCases) {
  if (fNext == fCases) FetchColumns(std::min(maxCases, RecordBlock::kMaxCases));
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
