// The user-missing definition of one variable: single values and, for numbers, one closed range.
//
// System-missing (a null cell, NaN, an infinity) needs no definition and is not covered here.
#pragma once

#include <string>
#include <vector>

class KOVA_MissingValues {
 public:
  void AddNumber(double value) { fNumbers.push_back(value); }
  void AddString(std::string value) { fStrings.push_back(std::move(value)); }

  // Both ends belong to the range; either may be the lowest or highest double.
  void SetRange(double low, double high) {
    fbRange = true;
    fLow = low;
    fHigh = high;
  }

  bool IsEmpty() const { return fNumbers.empty() && fStrings.empty() && !fbRange; }

  const std::vector<double>& GetNumbers() const { return fNumbers; }
  const std::vector<std::string>& GetStrings() const { return fStrings; }
  bool HasRange() const { return fbRange; }
  double GetLow() const { return fLow; }
  double GetHigh() const { return fHigh; }

  bool Contains(double value) const;
  bool Contains(const std::string& value) const;

 private:
  std::vector<double> fNumbers;
  std::vector<std::string> fStrings;
  bool fbRange = false;
  double fLow = 0.0;
  double fHigh = 0.0;
};
