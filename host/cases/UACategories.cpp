#include "host/cases/UACategories.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

namespace {

constexpr std::size_t kSmallNumbers = 1024;
constexpr double kNotMet = std::numeric_limits<double>::quiet_NaN();

bool Before(const KOVA_Value& left, const KOVA_Value& right) {
  return left.IsNumeric() ? left.GetNumber() < right.GetNumber()
                          : left.GetString() < right.GetString();
}

}  // namespace

UACategories::UACategories(const KOVA_Variable& variable, bool excludeUserMissing)
    : fpUserMissing(excludeUserMissing ? &variable.GetMissingValues() : nullptr) {
  if (variable.IsNumeric()) {
    fSmallCodes.assign(kSmallNumbers, kNotMet);
  } else {
    fStringCodes.assign(1, KOVA_SystemMissing);
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
    if (value >= 0.0 && value < static_cast<double>(kSmallNumbers)) {
      const auto whole = static_cast<std::size_t>(static_cast<int>(value));
      if (static_cast<double>(whole) == value) {
        double& code = fSmallCodes[whole];
        if (std::isnan(code)) {
          const double number = static_cast<double>(whole);  // 0 for -0
          code = Add(KOVA_Value(number), fpUserMissing && fpUserMissing->Contains(number));
        }
        codes[i] = code;
        continue;
      }
    }
    codes[i] = CodeOf(value);
  }
}

double UACategories::CodeOf(double value) {
  if (MCMV::IsMissing(value)) return KOVA_SystemMissing;
  const auto [place, added] = fOtherCodes.try_emplace(value, kNotMet);
  if (added) {
    place->second = Add(KOVA_Value(value), fpUserMissing && fpUserMissing->Contains(value));
  }
  return place->second;
}

void UACategories::EncodeStrings(const MCHost::ColumnView& cells, std::size_t n, double* codes) {
  const auto needed = static_cast<std::size_t>(cells.fpDictionary->Size()) + 1;
  if (fStringCodes.size() < needed) fStringCodes.resize(needed, kNotMet);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t place = std::int64_t{cells.fpCodes[i]} + 1;  // missing is -1
    double& code = fStringCodes[static_cast<std::size_t>(place)];
    if (std::isnan(code)) {
      const std::string& text = cells.fpDictionary->At(cells.fpCodes[i]);
      code = Add(KOVA_Value(text), fpUserMissing && fpUserMissing->Contains(text));
    }
    codes[i] = code;
  }
}

double UACategories::Add(KOVA_Value value, bool missing) {
  if (missing) return KOVA_SystemMissing;
  fValues.push_back(std::move(value));
  return static_cast<double>(fValues.size() - 1);
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
}
