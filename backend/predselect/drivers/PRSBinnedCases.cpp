#include "backend/predselect/drivers/PRSBinnedCases.h"

#include <utility>

void PRSBinnedCases::AddColumn(std::size_t column, std::optional<NBBinningEncoder> bins) {
  fColumns.push_back({column, std::move(bins), {}});
}

const MCCommon::Record* PRSBinnedCases::NextRecord() {
  const MCCommon::RecordBlock& block = NextBlock(1);
  if (block.Cases() == 0) return nullptr;
  fRecord = MCCommon::Record(block.Columns());
  for (std::size_t j = 0; j < block.Columns(); ++j) fRecord[j] = block.Column(j)[0];
  return &fRecord;
}

const MCCommon::RecordBlock& PRSBinnedCases::NextBlock(std::size_t maxCases) {
  const MCCommon::RecordBlock& source = fSource.NextBlock(maxCases);
  const std::size_t cases = source.Cases();
  fBlock.Reset(cases == 0 ? 0 : fColumns.size(), cases);
  for (std::size_t j = 0; j < fBlock.Columns(); ++j) {
    Column& column = fColumns[j];
    const double* values = source.Column(column.fSource);
    if (column.fBins) {
      fEncoded.resize(cases);
      column.fBins->EncodeColumn(values, cases, fEncoded.data());
      column.fCodes.assign(fEncoded.begin(), fEncoded.end());
      values = column.fCodes.data();
    }
    fBlock.SetColumn(j, values);
  }
  return fBlock;
}
