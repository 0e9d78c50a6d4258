#include "host/cases/UACategories.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <type_traits>
#include <utility>

namespace {

constexpr double kSmallNumbers = 1024;
constexpr double kNotMet = std::numeric_limits<double>::quiet_NaN();

bool Before(const KOVA_Value& left, const KOVA_Value& right) {
  return left.IsNumeric() ? left.GetNumber() < right.GetNumber()
                          : left.GetString() < right.GetString();
}

}  // namespace

UACategories::UACategories(const KOVA_Variable& variable, bool excludeUserMissing)
    : fpUserMissing(excludeUserMissing ? &variable.GetMissingValues() : nullptr) {
  if (variable.IsNumeric()) {
    fSmallCodes.assign(static_cast<std::size_t>(kSmallNumbers), kNotMet);
  } else {
    fStringCodes.assign(1, KOVA_SystemMissing);
  }
}

UACategories::UACategories(const KOVA_Variable& variable, std::vector<KOVA_Value> fixed,
                           KOVA_MissingValues missing)
    : UACategories(variable, false) {
  for (std::size_t code = 0; code < fixed.size(); ++code) {
    const auto number = static_cast<double>(code);
    if (!fixed[code].IsNumeric()) {
      fFixedTexts.try_emplace(fixed[code].GetString(), number);
    } else if (double* place = PlaceOf(fixed[code].GetNumber()); std::isnan(*place)) {
      *place = number;
    }
  }
  fbFixed = true;
  fFixedMissing = std::move(missing);
  fValues = std::move(fixed);
}

void UACategories::Begin(const std::vector<KOVA_Value>& values) {
  for (const KOVA_Value& value : values) {
    if (value.IsNumeric()) {
      (void)CodeOf(value.GetNumber());
    } else {
      fFixedTexts.emplace(value.GetString(), Add(value.GetString()));
    }
  }
}

void UACategories::Encode(const MCHost::ColumnView& cells, std::size_t n, double* codes) {
  if (cells.fpNumbers != nullptr) {
    EncodeNumbers(cells.fpNumbers, n, codes);
  } else {
    EncodeStrings(cells, n, codes);
  }
}

void UACategories::EncodeNumbers(const double* values, std::size_t n, double* codes) {
  for (std::size_t i = 0; i < n; ++i) {
    const double value = values[i];
    double small = value > 0.0 ? value : 0.0;
    small = small < kSmallNumbers - 1 ? small : kSmallNumbers - 1;
    const int whole = static_cast<int>(small);
    const double code = fSmallCodes[static_cast<std::size_t>(whole)];
    codes[i] = whole == value && !std::isnan(code) ? code : CodeOf(value);
  }
}

// Where the code of a number stands, not met yet for a new one; null for one that is not fixed.
double* UACategories::PlaceOf(double value) {
  if (value >= 0.0 && value < kSmallNumbers && value == std::floor(value)) {
    return &fSmallCodes[static_cast<std::size_t>(value)];
  }
  if (!fbFixed) return &fOtherCodes.try_emplace(value, kNotMet).first->second;
  const auto found = fOtherCodes.find(value);
  return found == fOtherCodes.end() ? nullptr : &found->second;
}

double UACategories::CodeOf(double value) {
  if (MCMV::IsMissing(value)) return KOVA_SystemMissing;
  double* place = PlaceOf(value);
  if (place == nullptr) return Unlisted(value);
  if (std::isnan(*place)) *place = Add(value + 0.0);  // 0 for -0
  return *place;
}

void UACategories::EncodeStrings(const MCHost::ColumnView& cells, std::size_t n, double* codes) {
  const auto needed = static_cast<std::size_t>(cells.fpDictionary->Size()) + 1;
  if (fStringCodes.size() < needed) fStringCodes.resize(needed, kNotMet);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t place = std::int64_t{cells.fpCodes[i]} + 1;  // missing is -1
    double& code = fStringCodes[static_cast<std::size_t>(place)];
    if (std::isnan(code)) code = Add(cells.fpDictionary->At(cells.fpCodes[i]));
    codes[i] = code;
  }
}

// The code of a value that is met for the first time.
template <typename Value>
double UACategories::Add(const Value& value) {
  if (fpUserMissing != nullptr && fpUserMissing->Contains(value)) return KOVA_SystemMissing;
  if constexpr (std::is_same_v<Value, std::string>) {
    const auto found = fFixedTexts.find(value);
    if (found != fFixedTexts.end()) return found->second;
  }
  if (fbFixed) return Unlisted(value);
  fValues.emplace_back(value);
  return static_cast<double>(fValues.size() - 1);
}

// What a value becomes that is not among the fixed ones.
template <typename Value>
double UACategories::Unlisted(const Value& value) const {
  return fFixedMissing.Contains(value) ? KOVA_SystemMissing : kUnseen;
}

void UACategories::Sort(bool ascending) {
  std::vector<std::size_t> order(fValues.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
    return ascending ? Before(fValues[left], fValues[right])
                     : Before(fValues[right], fValues[left]);
  });
  std::vector<KOVA_Value> sorted;
  std::vector<double> newCodes(fValues.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    sorted.push_back(std::move(fValues[order[i]]));
    newCodes[order[i]] = static_cast<double>(i);
  }
  fValues = std::move(sorted);
  const auto renumber = [&newCodes](double& code) {
    if (code >= 0.0) code = newCodes[static_cast<std::size_t>(code)];
  };
  std::for_each(fSmallCodes.begin(), fSmallCodes.end(), renumber);
  std::for_each(fStringCodes.begin(), fStringCodes.end(), renumber);
  for (auto& entry : fOtherCodes) renumber(entry.second);
  for (auto& entry : fFixedTexts) renumber(entry.second);
}
