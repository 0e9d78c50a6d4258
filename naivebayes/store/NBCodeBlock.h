// A block of processed records as integers, column by column, and the case weights: the form in
// which records are counted and multiplied up. Records without a valid target or with a weight that
// is not above 0 are left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/RecordBlock.h"

// The category of a value: truncated after the offset was added; -1 for a missing or negative
// value.
std::int32_t CategoryOf(double value, double offset);

class NBCodeBlock {
 public:
  // What is added before a code is truncated, in counting and in selection. That they differ is
  // kept on purpose.
  static constexpr double kCountingOffset = 0.5;
  static constexpr double kSelectionOffset = 0.45;

  // Replaces the contents by a block of processed records.
  void Load(const MCCommon::RecordBlock& block, bool hasWeight, double offset);
  // Adds them instead.
  void Append(const MCCommon::RecordBlock& block, bool hasWeight, double offset);

  // For who encodes straight into the block: its columns, which must end up equally long.
  void SetInputs(int inputs) { fvCodes.resize(inputs); }
  std::vector<std::int32_t>& TargetColumn() { return fvTargets; }
  std::vector<double>& WeightColumn() { return fvWeights; }
  std::vector<std::int32_t>& CodeColumn(int input) { return fvCodes[input]; }

  std::size_t Cases() const { return fvWeights.size(); }
  const std::int32_t* Targets() const { return fvTargets.data(); }
  const double* Weights() const { return fvWeights.data(); }
  // REQUIRES: 0 <= input < inputs of the records.
  const std::int32_t* Codes(int input) const { return fvCodes[input].data(); }

 private:
  std::vector<std::int32_t> fvTargets;
  std::vector<double> fvWeights;
  std::vector<std::vector<std::int32_t>> fvCodes;
  std::vector<std::size_t> fvAccepted;
};
