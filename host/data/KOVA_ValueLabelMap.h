// The value labels of one variable: the text shown in place of a value.
#pragma once

#include <map>
#include <string>

class KOVA_ValueLabelMap {
 public:
  void SetLabel(double value, std::string label) { fNumbers[value] = std::move(label); }
  void SetLabel(const std::string& value, std::string label) { fStrings[value] = std::move(label); }

  // Null when the value has no label. The text stays valid until the map changes.
  const std::string* FindLabel(double value) const;
  const std::string* FindLabel(const std::string& value) const;

  const std::map<double, std::string>& Numbers() const { return fNumbers; }
  const std::map<std::string, std::string>& Strings() const { return fStrings; }

  bool IsEmpty() const { return fNumbers.empty() && fStrings.empty(); }

 private:
  std::map<double, std::string> fNumbers;
  std::map<std::string, std::string> fStrings;
};
