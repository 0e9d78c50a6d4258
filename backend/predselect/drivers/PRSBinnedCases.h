// Some columns of a stream of cases, with the numbers of scale variables replaced by the bins in
// which the Naive Bayes engine would put them: all columns but the weight are categories.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "common/RecordIterator.h"
#include "naivebayes/encoders/NBBinningEncoder.h"

class PRSBinnedCases final : public MCCommon::RecordIterator {
 public:
  // The stream is borrowed; records and blocks of it must not be mixed.
  explicit PRSBinnedCases(MCCommon::RecordIterator& source) : fSource(source) {}

  // The next column of the records: that of the source, as it is or in bins.
  void AddColumn(std::size_t column, std::optional<NBBinningEncoder> bins);

  bool HasMore() override { return fSource.HasMore(); }
  const MCCommon::Record* NextRecord() override;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override;
  FailReason GetFailReason() const override { return fSource.GetFailReason(); }

 private:
  struct Column {
    std::size_t fSource;
    std::optional<NBBinningEncoder> fBins;
    std::vector<double> fCodes;
  };

  MCCommon::RecordIterator& fSource;
  std::vector<Column> fColumns;
  std::vector<std::int32_t> fEncoded;
  MCCommon::RecordBlock fBlock;
  MCCommon::Record fRecord;
};
