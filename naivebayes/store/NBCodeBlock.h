// A run of processed records as integers, column by column: the form in which records are stored,
// counted and multiplied up. Every record has a valid target and a weight above 0.
//
// A block does not own its columns. Whoever hands it out keeps them alive and unchanged until the
// next block is asked of the same source.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "naivebayes/store/NBCodes.h"

// The category of a value: truncated after the offset was added; -1 for a missing or negative
// value.
std::int32_t CategoryOf(double value, double offset);

class NBCodeBlock {
 public:
  // What is added to a value that a caller hands over as a code, before it is truncated: in
  // counting and scoring, and in selection. That they differ is kept on purpose; to codes that the
  // component itself has made they make no difference.
  static constexpr double kCountingOffset = 0.5;
  static constexpr double kSelectionOffset = 0.45;

  // Makes the block a view of these columns, with codes still to be set.
  void Reset(std::size_t cases, const std::int32_t* targets, const double* weights,
             std::size_t inputs) {
    fCases = cases;
    fpTargets = targets;
    fpWeights = weights;
    fvCodes.assign(inputs, NBCodes());
  }
  void SetCodes(std::size_t input, NBCodes codes) { fvCodes[input] = codes; }
  // Makes the block a view of at most so many cases of another one, from a case on.
  void Take(const NBCodeBlock& whole, std::size_t first, std::size_t most);

  std::size_t Cases() const { return fCases; }
  int Inputs() const { return static_cast<int>(fvCodes.size()); }
  const std::int32_t* Targets() const { return fpTargets; }
  const double* Weights() const { return fpWeights; }
  // REQUIRES: 0 <= input < Inputs().
  NBCodes Codes(int input) const { return fvCodes[input]; }
  // One code, where a whole column is not wanted.
  std::int32_t Code(int input, std::size_t i) const {
    return std::visit([i](const auto* codes) -> std::int32_t { return codes[i]; }, fvCodes[input]);
  }

 private:
  std::size_t fCases = 0;
  const std::int32_t* fpTargets = nullptr;
  const double* fpWeights = nullptr;
  std::vector<NBCodes> fvCodes;
};
