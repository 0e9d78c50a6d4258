// What the cells of one variable hold, gathered in one pass: counts, moments, distinct values with
// how often they come, and the distribution. User-missing values are counted, not looked into.
//
// Memory: a count for each distinct text, which the table keeps anyway; for numbers that of a
// DistinctCount and a QuantileSketch. Results depend on the order of the cases alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/MissingValue.h"
#include "host/data/ITable.h"
#include "operations/DistinctCount.h"
#include "operations/Moments.h"
#include "operations/QuantileSketch.h"

namespace PredSelect {

class ColumnSummary {
 public:
  struct Category {
    std::string fValue;
    std::string fLabel;  // empty for none
    double fCases;
  };

  // Borrows the variable.
  explicit ColumnSummary(const KOVA_Variable& variable) : fpVariable(&variable) {}

  // A column's texts must be of one dictionary.
  void Observe(const MCHost::ColumnView& column, std::size_t n);

  // Ends the pass. REQUIRES: the dictionary of the texts is there.
  void Finish();

  const KOVA_Variable& Variable() const { return *fpVariable; }

  // Of all cases; the last two have no part in anything else.
  double Valid() const { return fNValid; }
  double Missing() const { return fNMissing; }
  double UserMissing() const { return fNUserMissing; }

  double Distinct() const;
  bool IsDistinctExact() const { return fDistinct.IsExact(); }

  // Of texts and of numbers whose distinct values were counted: the most frequent ones, equally
  // frequent ones in ascending order.
  std::vector<Category> MostFrequent(std::size_t n) const;

  // What each of these is called: its label, with the value behind it where another has the same.
  static std::vector<std::string> NamesOf(const std::vector<Category>& categories);

  // Of numbers; missing values where there are too few of them.
  double Minimum() const { return fMinimum; }
  double Maximum() const { return fMaximum; }
  double Mean() const;
  double Deviation() const;  // standard, of a sample
  bool IsWhole() const { return fbWhole; }

  // Of numbers. Exact where the distinct values are.
  double Quantile(double share) const { return fDistribution.Quantile(share); }
  std::vector<double> Histogram(std::size_t nBins) const;

  // A value of the variable as a text: digits, or a date.
  std::string ValueText(double value) const;

 private:
  void ObserveNumber(double value);
  void AddValid(double value);
  void Distribute(double value);
  void ObserveCode(std::int32_t code);
  void FinishTexts();
  std::vector<Category> MostFrequentNumbers(std::size_t n) const;
  std::vector<Category> MostFrequentTexts(std::size_t n) const;

  const KOVA_Variable* fpVariable;
  double fNValid = 0.0;
  double fNMissing = 0.0;
  double fNUserMissing = 0.0;

  // Numbers.
  double fMinimum = KOVA_SystemMissing;
  double fMaximum = KOVA_SystemMissing;
  Moments fMoments;
  bool fbWhole = true;
  DistinctCount fDistinct;
  QuantileSketch fSketch;  // once the distinct numbers are no longer counted
  Distribution fDistribution{{}};

  // Texts.
  const MCHost::StringDictionary* fpDictionary = nullptr;
  std::vector<std::int64_t> fCodeCounts;
  std::vector<std::int32_t> fMetCodes;  // valid ones
};

}  // namespace PredSelect
