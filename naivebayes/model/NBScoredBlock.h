// The scores of a block of records: per case the winning category, the class probabilities, and
// what scoring the record alone would warn of.
//
// To be kept from block to block: the room that scoring works in stays, so that no case costs an
// allocation. A plain value; the component fills it (INBAlgorithm::ScoreBlock).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "naivebayes/model/NBScaledProducts.h"

class NBayesInputBase;
class NBayesOutput;

class NBScoredBlock {
 public:
  // Cases of a block that is scored in so short a time that whoever polls for a cancel between
  // blocks need not wait.
  static std::size_t PreferredCases(int targetCategories, int inputs);

  std::size_t Cases() const { return fvWinners.size(); }

  // The winning categories by case; -1 for a case that was not scored.
  const std::vector<std::int32_t>& GetWinners() const { return fvWinners; }

  // The probabilities by target category, those of one case side by side; of no use for a case
  // that was not scored.
  const std::vector<double>& GetProbabilities() const { return fvProbabilities; }

  // The warning that a case comes with, 0 for none: 70016 no valid input, the probabilities are the
  // normalised priors; 70010 an input out of range, it was not scored.
  std::int64_t GetWarning(std::size_t i) const;

  // For the component: begins a block, takes the codes of one input after another (as
  // NBDataPreparator encodes them) into CodeColumn, and decides.
  void Start(const NBayesOutput& output, std::size_t cases);
  std::int32_t* CodeColumn() { return fvCodes.data(); }
  void Multiply(const NBayesInputBase& input);
  void Decide(const NBayesOutput& output);

 private:
  std::size_t fNTargets = 0;
  std::vector<std::int32_t> fvWinners;
  std::vector<double> fvProbabilities;
  NBScaledProducts fProducts;
  std::vector<std::int32_t> fvCodes;
  std::vector<std::int32_t> fvCommonBits;  // of a case's codes; all set while all are missing
  std::vector<char> fvOutOfRange;
};
