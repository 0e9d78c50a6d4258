#include "naivebayes/store/NBRecordStore.h"

#include <cstddef>
#include <numeric>
#include <utility>

#include "common/MissingValue.h"

using MCCommon::MultiPassRecordIter;
using MCCommon::RecordBlock;

NBRecordStore::NBRecordStore(MultiPassRecordIter& records, int inputs, bool hasWeight)
    : fRecords(records), fbHasWeight(hasWeight), fvColumns(inputs) {
  const std::size_t first = hasWeight ? 2 : 1;
  std::iota(fvColumns.begin(), fvColumns.end(), first);
  fBlockCases = RecordBlock::PreferredCases(first + fvColumns.size());
}

NBRecordStore::NBRecordStore(std::unique_ptr<MultiPassRecordIter> records, int inputs,
                             bool hasWeight)
    : NBRecordStore(*records, inputs, hasWeight) {
  fpOwned = std::move(records);
}

void NBRecordStore::Append(const RecordBlock& records) {
  constexpr double kOffset = NBCodeBlock::kSelectionOffset;
  fvAccepted.clear();
  for (std::size_t i = 0; i < records.Cases(); ++i) {
    const std::int32_t target = CategoryOf(records.Column(0)[i], kOffset);
    const double weight = fbHasWeight ? records.Column(1)[i] : 1.0;
    if (target < 0 || MCMV::IsMissing(weight) || weight <= 0) continue;
    fvAccepted.push_back(i);
    fBuffer.fvTargets.push_back(target);
    fBuffer.fvWeights.push_back(weight);
  }
  for (std::size_t j = 0; j < fvColumns.size(); ++j) {
    const double* values = records.Column(fvColumns[j]);
    std::vector<std::int32_t>& codes = fBuffer.fvCodes[j];
    const std::size_t start = codes.size();
    codes.resize(start + fvAccepted.size());
    for (std::size_t n = 0; n < fvAccepted.size(); ++n) {
      codes[start + n] = CategoryOf(values[fvAccepted[n]], kOffset);
    }
  }
}

const NBCodeBlock* NBRecordStore::NextCodes() {
  fBuffer.Resize(fvColumns.size(), 0);
  // Filled up, so that the blocks do not depend on those that the records come in.
  while (fBuffer.fvTargets.size() < fBlockCases) {
    const RecordBlock& records = fRecords.NextBlock(fBlockCases - fBuffer.fvTargets.size());
    if (records.Cases() == 0) break;
    Append(records);
  }
  return fBuffer.fvTargets.empty() ? nullptr : &fBuffer.View();
}

bool NBRecordStore::HasFailed() const {
  return fRecords.GetFailReason() == MultiPassRecordIter::kReadError;
}

void NBRecordStore::KeepInputs(const std::vector<int>& inputs) {
  for (std::size_t n = 0; n < inputs.size(); ++n) fvColumns[n] = fvColumns[inputs[n]];
  fvColumns.resize(inputs.size());
}
