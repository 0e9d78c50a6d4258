// One predictor's table: how often each of its categories met each target category in training, and
// the conditional probabilities estimated from that.
//
// Tables are stored row by row, the target categories of one predictor category side by side.
// Behind the last row of probabilities stands one row of ones, the factor of a missing value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "naivebayes/store/NBCodes.h"

class NBayesInputBase {
 public:
  virtual ~NBayesInputBase() = default;

  // Empty tables for so many predictor and target categories.
  void Setup(int categories, int targetCategories);
  // Tables from counts, one row per predictor category, and their probabilities. The longest row
  // gives the target categories; shorter rows are filled with 0.
  void Setup(double alpha, const std::vector<std::vector<double>>& counts);

  // P(m|k) = (alpha + N(m,k)) / (M' alpha + T(k)), M' the predictor categories with a count and
  // T(k) the column total: smoothing goes by the non-empty categories. With M' = 0 every
  // probability is alpha itself. Returns M'.
  int ComputeProbabilities(double alpha);

  void ResetCounts();
  // Adds weights[i] to the cell (codes[i], targets[i]) of each case whose code is not negative.
  // REQUIRES: codes and targets within the tables.
  void AddCases(NBCodes codes, const std::int32_t* targets, const double* weights,
                std::size_t cases);
  // The same for weights that are all 1, and counts that are whole numbers.
  void AddUnitCases(NBCodes codes, const std::int32_t* targets, std::size_t cases);
  // Makes room for more categories, keeping counts and probabilities. Until these are computed
  // anew, a new category has the factors of a missing value.
  void Grow(int categories, int targetCategories);
  // REQUIRES: the cell is within the tables.
  void AddCount(int category, int target, double weight);
  // Adds a whole table, stored as it is here. REQUIRES: it has the size of this one.
  void AddCounts(const std::vector<double>& table);
  const std::vector<double>& GetCounts() const { return fvCounts; }

  int GetNCategories() const { return fNCategories; }
  int GetNNonEmpty() const { return fNNonEmpty; }
  int GetNTargetCategories() const { return fNTargets; }
  double GetCount(int category, int target) const { return fvCounts[Cell(category, target)]; }
  double GetProbability(int category, int target) const {
    return fvProbabilities[Cell(category, target)];
  }
  double GetRowTotal(int category) const;

  // The probabilities of one category by target category; those of a negative code are ones.
  const double* GetFactors(std::int32_t code) const {
    return fvProbabilities.data() + Cell(code < 0 ? fNCategories : code, 0);
  }
  // A bound from below of all factors, at most 1.
  double GetLeastFactor() const { return fLeastFactor; }

  virtual void Display(std::ostream& os) const;

 protected:
  // In saved state.
  template <class Archive, class Self>
  static void TableFields(Archive& archive, Self& self);

 private:
  template <typename Code>
  void TallyUnitCases(const Code* codes, const std::int32_t* targets, std::size_t cases);
  std::size_t Cell(int category, int target) const {
    return static_cast<std::size_t>(category) * fNTargets + target;
  }

  int fNCategories = 0;
  int fNNonEmpty = 0;
  int fNTargets = 0;
  std::vector<double> fvCounts;
  std::vector<double> fvProbabilities;
  double fLeastFactor = 1.0;
};
