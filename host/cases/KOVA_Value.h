// One value of a variable: a number or a string. A plain value.
#pragma once

#include <compare>
#include <string>
#include <utility>
#include <variant>

#include "common/MissingValue.h"

class KOVA_Value {
 public:
  KOVA_Value() = default;
  explicit KOVA_Value(double number) : fValue(number) {}
  explicit KOVA_Value(std::string text) : fValue(std::move(text)) {}

  bool IsNumeric() const { return fValue.index() == 0; }

  // REQUIRES: IsNumeric().
  double GetNumber() const { return std::get<double>(fValue); }
  // REQUIRES: !IsNumeric().
  const std::string& GetString() const { return std::get<std::string>(fValue); }

  bool operator==(const KOVA_Value&) const = default;
  // Numbers by value, then strings by bytes.
  auto operator<=>(const KOVA_Value&) const = default;

 private:
  std::variant<double, std::string> fValue = KOVA_SystemMissing;
};

// An observation: one case's value of a variable.
using OBS = KOVA_Value;
