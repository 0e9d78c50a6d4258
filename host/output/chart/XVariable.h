// One variable of a chart: what a data point says in one of its fields.
#pragma once

#include <map>
#include <string>
#include <utility>

class XVariable {
 public:
  enum Type { kCategorical, kScale };

  // How a scale variable's numbers are printed; codes are the host's.
  static constexpr int kThreeDecimals = 3;

  // `label` is shown at the axis or legend.
  XVariable(Type type, std::string label) : fType(type), fLabel(std::move(label)) {}

  Type GetType() const { return fType; }
  const std::string& GetLabel() const { return fLabel; }

  // Shows a value of a categorical variable as this text. The document tells values apart by their
  // texts: REQUIRES that no two are equal.
  void addRelabel(int value, std::string text) { fRelabels[value] = std::move(text); }
  // The value's text, the number itself when it was given none.
  std::string Relabelled(int value) const {
    const auto found = fRelabels.find(value);
    return found != fRelabels.end() ? found->second : std::to_string(value);
  }
  const std::map<int, std::string>& GetRelabels() const { return fRelabels; }

  void SetNumberFormat(int format) { fNumberFormat = format; }
  int GetNumberFormat() const { return fNumberFormat; }

 private:
  Type fType;
  std::string fLabel;
  std::map<int, std::string> fRelabels;
  int fNumberFormat = 0;
};
