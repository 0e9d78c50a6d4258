#include "host/arrow/CsvKinds.h"

#include <arrow/type.h>
#include <arrow/util/value_parsing.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace MCHost {

namespace {

constexpr std::size_t kLongestOther = 256;  // longer texts are not looked at: they are text

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Digits with at most a sign before and a point among them: the numbers of most files.
bool IsPlainNumber(std::string_view text) {
  std::size_t digits = 0;
  std::size_t points = 0;
  for (std::size_t i = text[0] == '-' ? 1 : 0; i < text.size(); ++i) {
    if (IsDigit(text[i])) {
      ++digits;
    } else if (text[i] == '.' && digits > 0) {
      ++points;
    } else {
      return false;
    }
  }
  return digits > 0 && points <= 1 && text.back() != '.';
}

std::string_view WithoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool ParseNumber(std::string_view text, double* value) {
  const std::string_view bare = WithoutBlanks(text);
  return !bare.empty() && arrow::internal::StringToFloat(bare.data(), bare.size(), '.', value);
}

bool IsBoolean(std::string_view text) {
  constexpr std::array<std::string_view, 6> kTexts = {"true",  "True",  "TRUE",
                                                      "false", "False", "FALSE"};
  for (const std::string_view known : kTexts) {
    if (text == known) return true;
  }
  return false;
}

unsigned DateKinds(std::string_view text) {
  std::int64_t micros = 0;
  bool zone = false;
  if (text.size() < 10 || text[4] != '-' ||
      !arrow::internal::ParseTimestampISO8601(text.data(), text.size(), arrow::TimeUnit::MICRO,
                                              &micros, &zone)) {
    return kCsvText;
  }
  if (zone) return kCsvZonedTime;
  return text.size() == 10 ? kCsvDate | kCsvDateTime : kCsvDateTime;
}

bool IsTime(std::string_view text) {
  static const arrow::Time64Type type(arrow::TimeUnit::MICRO);
  std::int64_t micros = 0;
  return text.size() >= 5 && text[2] == ':' &&
         arrow::internal::ParseValue(type, text.data(), text.size(), &micros);
}

}  // namespace

unsigned CsvKindsOf(std::string_view text) {
  if (text.empty() || text.size() > kLongestOther) return kCsvText;
  double value = 0.0;
  if (IsPlainNumber(text) || ParseNumber(text, &value)) return kCsvNumber;
  if (IsBoolean(text)) return kCsvBoolean;
  if (IsTime(text)) return kCsvTime;
  return DateKinds(text);
}

bool CsvLosesDigits(std::string_view number) {
  constexpr std::size_t kExactDigits = 15;
  constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
  if (number.size() <= kExactDigits) return false;
  if (number.find_first_of(".eEnN") != std::string_view::npos) return false;
  double value = 0.0;
  return ParseNumber(number, &value) && std::abs(value) >= kExactIntegers;
}

bool CsvIsWhole(std::string_view number) {
  double value = 0.0;
  return ParseNumber(number, &value) && value == std::floor(value);
}

}  // namespace MCHost
