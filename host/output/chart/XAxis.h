// How one axis of a chart looks.
#pragma once

#include <optional>
#include <utility>

class XAxis {
 public:
  void SetTickFontSize(int points) { fTickFontSize = points; }
  int GetTickFontSize() const { return fTickFontSize; }

  // The shown range of a scale axis; without it the data decide.
  void SetInterval(double from, double to) { fInterval = {from, to}; }
  const std::optional<std::pair<double, double>>& GetInterval() const { return fInterval; }

  // Extends the range to round numbers.
  void SetNice(bool nice) { fbNice = nice; }
  bool IsNice() const { return fbNice; }

  // Empty room beyond the ends, as a fraction of what is between them. A scale axis has it only
  // beyond an interval that is set; a categorical one at least half a step.
  void SetMargins(double lower, double upper) { fMargins = {lower, upper}; }
  const std::pair<double, double>& GetMargins() const { return fMargins; }

  void HideLabel() { fbLabelHidden = true; }
  bool IsLabelHidden() const { return fbLabelHidden; }

  // Any number but 0 turns the axis round: small values stand at the far end.
  void invertScale(double factor) { fbInverted = factor != 0.0; }
  bool IsInverted() const { return fbInverted; }

 private:
  int fTickFontSize = 12;
  std::optional<std::pair<double, double>> fInterval;
  bool fbNice = false;
  std::pair<double, double> fMargins{0.0, 0.0};
  bool fbLabelHidden = false;
  bool fbInverted = false;
};
