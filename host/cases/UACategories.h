// The categories of one variable: values numbered 0, 1, 2, ... as they are first met, or by a list
// that is given.
//
// Missing values (null, NaN, infinite, and user-missing ones when these are excluded) have no
// number and are delivered as KOVA_SystemMissing. -0 and 0 are one category. State grows with the
// distinct values only, whatever the number of cases.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/cases/KOVA_Value.h"
#include "host/data/ITable.h"
#include "host/data/KOVA_MissingValues.h"

class UACategories {
 public:
  // The variable is borrowed for its user-missing definition.
  UACategories(const KOVA_Variable& variable, bool excludeUserMissing);

  // Numbers these values first, in their order; user-missing ones that are excluded get no number.
  // REQUIRES: nothing was encoded yet; values of the variable's kind, all different.
  void Begin(const std::vector<KOVA_Value>& values);

  // What a value that is not among given ones is delivered as.
  static constexpr double kUnseen = -1.0;

  // Numbers by position; a value given twice keeps its first number. Of those that are not given,
  // the ones in `missing` are missing, and all others unseen. What the variable declares as
  // user-missing does not count.
  UACategories(const KOVA_Variable& variable, std::vector<KOVA_Value> fixed,
               KOVA_MissingValues missing);
  UACategories(const UACategories&) = delete;
  UACategories& operator=(const UACategories&) = delete;

  int Size() const { return static_cast<int>(fValues.size()); }

  // REQUIRES: 0 <= code < Size().
  const KOVA_Value& Decode(int code) const { return fValues[static_cast<std::size_t>(code)]; }

  // The codes of `n` cells, new categories being added as they come unless they are fixed.
  // REQUIRES: cells of the variable's own kind.
  void Encode(const MCHost::ColumnView& cells, std::size_t n, double* codes);

  // Renumbers by value, numbers by size and strings by their bytes.
  void Sort(bool ascending);

 private:
  void EncodeNumbers(const double* values, std::size_t n, double* codes);
  void EncodeStrings(const MCHost::ColumnView& cells, std::size_t n, double* codes);
  double CodeOf(double value);
  double* PlaceOf(double value);
  template <typename Value>
  double Add(const Value& value);
  template <typename Value>
  double Unlisted(const Value& value) const;

  const KOVA_MissingValues* fpUserMissing = nullptr;  // null when such values are ordinary
  bool fbFixed = false;
  KOVA_MissingValues fFixedMissing;
  std::vector<KOVA_Value> fValues;
  std::unordered_map<std::string, double> fFixedTexts;  // also of values to begin with
  std::vector<double> fSmallCodes;                      // by small whole number; NaN: not met yet
  std::vector<double> fStringCodes;                     // by dictionary code + 1; NaN: not met yet
  std::unordered_map<double, double> fOtherCodes;
};
