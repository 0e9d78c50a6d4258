// The scores of a block of records: per case the winning category, the class probabilities, and
// what scoring the record alone would warn of.
//
// To be kept from block to block: the room that scoring works in stays, so that no case costs an
// allocation, and so do its threads. The component fills it (INBAlgorithm::ScoreBlock).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "common/Workers.h"
#include "naivebayes/model/NBScaledProducts.h"

class NBCalibration;
class NBayesInput;
class NBayesOutput;

class NBScoredBlock {
 public:
  // The cases of a block are shared out over so many threads, the caller's among them.
  explicit NBScoredBlock(int threads = 1) : fWorkers(threads) {}

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

  // For the component: the codes of an input for a run of cases, as NBDataPreparator encodes them,
  // and the lowest of them, at most 0. Asked from several threads at once.
  using Encode = std::function<std::int32_t(int input, std::size_t first, std::size_t cases,
                                            std::int32_t* codes)>;
  // Scores so many cases.
  void Score(const NBayesOutput& output, const std::vector<NBayesInput>& inputs,
             const NBCalibration& calibration, std::size_t cases, const Encode& encode);

 private:
  // What a worker needs of its own.
  struct Room {
    NBScaledProducts fProducts;
    std::vector<std::int32_t> fvCodes;
  };
  struct Part {
    std::size_t fFirst;
    std::size_t fNCases;
  };

  void Multiply(const std::vector<NBayesInput>& inputs, const Part& part, const Encode& encode,
                Room& room);
  // `lowest` is that of the codes.
  void NoteMissing(std::span<const std::int32_t> codes, std::int32_t lowest, std::size_t first);
  void Decide(const NBayesOutput& output, const NBCalibration& calibration, const Part& part,
              const NBScaledProducts& products);

  std::size_t fNTargets = 0;
  std::vector<std::int32_t> fvWinners;
  std::vector<double> fvProbabilities;
  std::vector<char> fvHasValid;  // by case: one of its codes is not missing
  std::vector<char> fvOutOfRange;
  MCCommon::Workers fWorkers;
  std::vector<Room> fvRooms;  // by worker
};
