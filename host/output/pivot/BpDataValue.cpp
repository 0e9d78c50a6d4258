#include "host/output/pivot/BpDataValue.h"

#include <fmt/format.h>

#include <cmath>

#include "host/data/KOVA_Variable.h"

namespace {

// Whole numbers print as such: categories are codes more often than measurements.
std::string Printed(double value, const KOVA_Format& format) {
  if (std::floor(value) == value && std::fabs(value) < 1e15) return fmt::format("{:.0f}", value);
  const std::string fixed = fmt::format("{:.{}f}", value, format.fDecimals);
  return std::stod(fixed) == value ? fixed : fmt::format("{}", value);
}

template <typename Value>
MCHost::OutputText Labelled(const KOVA_Variable& variable, const Value& value, std::string text) {
  const std::string* label = variable.GetValueLabels().FindLabel(value);
  return MCHost::OutputText::Value(std::move(text), label != nullptr ? *label : "");
}

}  // namespace

MCHost::OutputText BpDataValue(const KOVA_Variable& variable, double value) {
  return Labelled(variable, value, Printed(value, variable.GetFormat()));
}

MCHost::OutputText BpDataValue(const KOVA_Variable& variable, const std::string& value) {
  return Labelled(variable, value, value);
}
