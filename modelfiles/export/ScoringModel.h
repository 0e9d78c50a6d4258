// A built Naive Bayes model as whoever scores with it elsewhere needs it: what each predictor's
// values become, the factors that they stand for, the priors, and nothing of how it came about.
//
// A value that a predictor has no row for (missing, declared missing, new, not finite) has factor 1
// in every class. A plain value; the model that it was made of may go.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "naivebayes/model/NBCalibration.h"

class INBAlgorithm;
class INBVariable;

namespace MCModelFiles {

// A name, and the values that its categories stand for: one of the two lists.
struct ScoringVariable {
  std::string fName;
  std::string fLabel;
  bool fbTexts = false;
  std::vector<double> fNumbers{};
  std::vector<std::string> fTexts{};

  std::size_t GetNCategories() const { return fbTexts ? fTexts.size() : fNumbers.size(); }
};

struct ScoringInput : ScoringVariable {
  bool fbBinned = false;
  // Of a binned predictor, which has no categories: row i is (cut i-1, cut i], the first and the
  // last one without a bound.
  std::vector<double> fCuts{};
  std::vector<double> fMissing{};                            // values declared missing
  std::optional<std::pair<double, double>> fMissingRange{};  // both ends are missing, too
  double fLow = 0;                                           // of the training data
  double fHigh = 0;
  // Row by row, the classes side by side.
  std::vector<double> fCounts{};   // training weight
  std::vector<double> fFactors{};  // P(row | class)

  std::size_t GetNRows() const { return fbBinned ? fCuts.size() + 1 : GetNCategories(); }
};

// Numbers above `fAbove` up to `fUpTo` are of a row.
struct ScoringInterval {
  double fAbove;
  double fUpTo;
  std::size_t fRow;
};

struct ScoringModel {
  ScoringVariable fTarget;
  std::vector<double> fCounts;  // training weight of each class
  std::vector<double> fPriors;
  double fTotalWeight = 0;
  int fNRecords = 0;
  std::vector<ScoringInput> fInputs;
  NBCalibration fCalibration;

  // REQUIRES: the model was built.
  explicit ScoringModel(const INBAlgorithm& model);
  ScoringModel() = default;

  std::size_t GetNClasses() const { return fPriors.size(); }
};

// The rows of a binned predictor without its missing values, in ascending order: each finite number
// that has a row is in one interval.
std::vector<ScoringInterval> IntervalsOf(const ScoringInput& input);

// Logarithms of the factors, each row less its largest: what they say of the classes is the same,
// and sums of those of likely classes stay near 0, where doubles are densest.
std::vector<double> EvidenceOf(const ScoringInput& input, std::size_t classes);

// How classes that are equally likely are ranked: the larger training weight first, then the order
// of the classes.
std::vector<std::size_t> ClassesByWeight(const ScoringModel& model);

}  // namespace MCModelFiles
