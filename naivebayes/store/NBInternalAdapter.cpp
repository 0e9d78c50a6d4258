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
      fCurRecord(preparator.GetProcessedSize()) {}

void NBInternalAdapter::Accept(const RecordBlock& block) {
  const std::size_t cases = block.Cases();
  fBuffer.Resize(fPreparator.GetInputSize(), cases);
  const std::vector<std::int32_t>& codes = fBuffer.fvTargets;
  const std::vector<double>& weights = fBuffer.fvWeights;
  const double* targets = block.Column(fPreparator.GetTargetColumn());
  fPreparator.EncodeTargets(targets, cases, fBuffer.fvTargets.data());
  const int weight = fPreparator.GetWeightColumn();
  if (weight >= 0) fPreparator.EncodeWeights(block.Column(weight), cases, fBuffer.fvWeights.data());
  fvAccepted.clear();
  NBCancelInfo& cancel = fPreparator.GetCancelInfo();
  for (std::size_t i = 0; i < cases && !cancel.IsCancel(); ++i, ++fNSeen) {
    if (weights[i] == MCMV::gMissingValue) {
      ++fExcluded.fNRecords;
    } else if (codes[i] == INBEncoder::kMissingCode) {
      ++fExcluded.fNRecords;
      fExcluded.fWeight += weights[i];
    } else if (codes[i] == NBDataPreparator::kOutOfRange && fNLeft != 0) {
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

void NBInternalAdapter::EncodeAccepted(const RecordBlock& block) {
  const std::size_t cases = block.Cases();
  const auto inputs = static_cast<std::size_t>(fPreparator.GetInputSize());
  const auto columnOf = [&](std::size_t j) {
    return block.Column(fPreparator.GetInputColumn(static_cast<int>(j)));
  };
  Compact(fBuffer.fvTargets, fvAccepted);
  Compact(fBuffer.fvWeights, fvAccepted);
  fvOutOfRange.assign(inputs, 0);
  const auto encode = [&](std::size_t j, std::size_t) {
    fvOutOfRange[j] = EncodeInput(static_cast<int>(j), columnOf(j), cases);
  };
  NBCancelInfo& cancel = fPreparator.GetCancelInfo();
  fPreparator.GetWorkers().For(cases * inputs).ForEach(inputs, encode, [&cancel] {
    return cancel.IsCancel();
  });
  for (std::size_t j = 0; j < inputs; ++j) {
    if (fvOutOfRange[j] == 0) continue;
    ReplaceOutOfRange(static_cast<int>(j), columnOf(j), cases, fBuffer.fvCodes[j]);
  }
}

bool NBInternalAdapter::EncodeInput(int input, const double* values, std::size_t cases) {
  std::vector<std::int32_t>& column = fBuffer.fvCodes[input];
  const std::int32_t lowest = fPreparator.EncodeInputs(input, values, cases, column.data());
  Compact(column, fvAccepted);
  return lowest == NBDataPreparator::kOutOfRange &&
         NBDataPreparator::LowestOf(column.data(), column.size()) == lowest;
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

bool NBInternalAdapter::IsUsable(const RecordBlock& block) {
  if (block.Cases() == 0) {
    if (fSource.GetFailReason() == kReadError) fStatus = MCNaive::Error(MCNaive::kSourceFailed);
    return false;
  }
  if (static_cast<int>(block.Columns()) < fPreparator.GetOriginalSize()) {
    fStatus = MCNaive::Error(MCNaive::kWrongRecordSize);
    return false;
  }
  return true;
}

const NBCodeBlock* NBInternalAdapter::NextCodes() {
  while (fNLeft != 0 && !fStatus.IsError() && !fPreparator.GetCancelInfo().IsCancel()) {
    const std::size_t wanted =
        fNLeft < 0 ? RecordBlock::kMaxCases
                   : std::min(RecordBlock::kMaxCases, static_cast<std::size_t>(fNLeft));
    const RecordBlock& block = fSource.NextBlock(wanted);
    if (!IsUsable(block)) return nullptr;
    Accept(block);
    EncodeAccepted(block);
    if (fPreparator.GetCancelInfo().IsCancel()) return nullptr;
    if (fNLeft > 0) fNLeft -= static_cast<std::int64_t>(fvAccepted.size());
    if (!fvAccepted.empty()) return &fBuffer.View();
  }
  return nullptr;
}

void NBInternalAdapter::CountRest() {
  while (fNLeft == 0 && !fStatus.IsError() && !fPreparator.GetCancelInfo().IsCancel()) {
    const RecordBlock& block = fSource.NextBlock(RecordBlock::kMaxCases);
    if (!IsUsable(block)) return;
    Accept(block);
  }
}

bool NBInternalAdapter::HasMore() {
  if (fpCodes != nullptr && fNext < fpCodes->Cases()) return true;
  fpCodes = NextCodes();
  fNext = 0;
  return fpCodes != nullptr;
}

const MCCommon::Record* NBInternalAdapter::NextRecord() {
  if (!HasMore()) return nullptr;
  const int first = fPreparator.GetFirstInput();
  fCurRecord[0] = fpCodes->Targets()[fNext];
  if (first == 2) fCurRecord[1] = fpCodes->Weights()[fNext];
  for (int j = 0; j < fpCodes->Inputs(); ++j) fCurRecord[first + j] = fpCodes->Code(j, fNext);
  ++fNext;
  return &fCurRecord;
}

MCCommon::RecordIterator::FailReason NBInternalAdapter::GetFailReason() const {
  if (fStatus.IsError()) return kReadError;
  return fpCodes != nullptr && fNext < fpCodes->Cases() ? kSuccess : kNoRecords;
}
