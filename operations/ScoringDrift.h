// How the cases that a model predicts differ from those that it was built on, predictor by
// predictor.
//
// What the model was built on is the whole table of that run, test cases included: its categories,
// and its lowest and highest values. The share of missing values is that of the training cases
// alone.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class INBAlgorithm;
class NBScoredBlock;
namespace MCCommon {
class RecordBlock;
}
namespace MCHost {
class MemoryTable;
}

namespace PredSelect {

struct PredictorDrift {
  std::string fName;
  bool fbCategorical = true;
  std::int64_t fNUnseen = 0;      // cases with a category that is new; it counts as missing
  std::int64_t fNBelow = 0;       // cases with a value below the range, taken as its lowest bin
  std::int64_t fNAbove = 0;       // cases with a value above the range, taken as its highest bin
  std::int64_t fNMissing = 0;     // cases without a value, or with one that the model takes as none
  double fTrainingMissing = 0.0;  // share of the training weight without a value, from 0 to 1

  std::int64_t GetNNew() const { return fNUnseen + fNBelow + fNAbove; }
};

struct ScoringDrift {
  std::int64_t fNCases = 0;
  std::int64_t fNUnusable = 0;              // cases in which every predictor is missing or new
  std::vector<PredictorDrift> fPredictors;  // of the model, in its order

  double ShareOf(std::int64_t cases) const {
    return fNCases == 0 ? 0.0 : static_cast<double>(cases) / static_cast<double>(fNCases);
  }
};

class DriftCounter {
 public:
  // The model is borrowed. REQUIRES: it was built.
  explicit DriftCounter(const INBAlgorithm& model);
  ~DriftCounter();

  // Counts the cases of a block in records of the model's variables, a category that is new being
  // UACategories::kUnseen, with what became of them.
  void Count(const MCCommon::RecordBlock& block, const NBScoredBlock& scored);

  const ScoringDrift& Drift() const { return fDrift; }

 private:
  struct Input;

  std::vector<Input> fInputs;
  ScoringDrift fDrift;
};

// Shows, in the current run, the predictors of which anything was counted, and warns where more
// than 5 % of the cases hold something new or nothing usable, and where values are missing in 10 %
// of the cases more than in training.
void ShowDrift(const ScoringDrift& drift);

// One row a predictor: predictor, kind (categorical, continuous), cases, unseen, below, above,
// missing, missing_share, training_missing_share. What a kind does not have is missing.
std::unique_ptr<MCHost::MemoryTable> DriftTable(const ScoringDrift& drift);

}  // namespace PredSelect
