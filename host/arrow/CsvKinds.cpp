#include "host/arrow/CsvKinds.h"

#include <arrow/type.h>
#include <arrow/util/value_parsing.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>

namespace MCHost {

namespace {

constexpr std::size_t kExactDigits = 15;  // a double holds so many of any number

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsInt64(std::string_view digits) {
  std::int64_t value = 0;
  return std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc{};
}

// Whether zeros stand before the digits that count, behind a sign at most.
bool IsPadded(std::string_view number) {
  const std::size_t first = number[0] == '-' ? 1 : 0;
  return number.size() > first + 1 && number[first] == '0' && IsDigit(number[first + 1]);
}

// The kinds of digits with at most a sign before and a point among them, the numbers of most files;
// kCsvText for any other text.
unsigned PlainNumberKinds(std::string_view text) {
  const std::size_t first = text[0] == '-' ? 1 : 0;
  std::size_t digits = 0;
  std::size_t points = 0;
  for (std::size_t i = first; i < text.size(); ++i) {
    if (IsDigit(text[i])) {
      ++digits;
    } else if (text[i] == '.' && digits > 0) {
      ++points;
    } else {
      return kCsvText;
    }
  }
  if (digits == 0 || points > 1 || text.back() == '.') return kCsvText;
  if (IsPadded(text)) return kCsvNumber;
  unsigned kinds = kCsvNumber | kCsvMayHold;
  if (digits <= kExactDigits) kinds |= kCsvHeld;
  const bool isMinusZero = first == 1 && text[1] == '0';
  if (points == 0 && !isMinusZero && (digits <= kExactDigits || IsInt64(text))) kinds |= kCsvWhole;
  return kinds;
}

std::string_view WithoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  if (!text.empty() && text.front() > ' ' && text.back() > ' ') return text;  // as most are
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

// A moment in both units, or in the one that can have it.
struct MomentUnits {
  bool fbMicros = false;
  bool fbNanos = false;
};

// `read` is handed a unit and where the value goes; false where the text is none in it.
template <class Read>
MomentUnits UnitsOf(Read read) {
  constexpr std::int64_t kMostMicros = std::numeric_limits<std::int64_t>::max() / 1000;
  std::int64_t value = 0;
  if (read(arrow::TimeUnit::MICRO, &value)) return {true, std::abs(value) <= kMostMicros};
  return {false, read(arrow::TimeUnit::NANO, &value)};
}

unsigned DateKinds(std::string_view text) {
  if (text.size() < 10 || text[4] != '-') return kCsvText;
  bool zone = false;
  const auto [isMicros, isNanos] = UnitsOf([&](arrow::TimeUnit::type unit, std::int64_t* value) {
    zone = false;
    return arrow::internal::ParseTimestampISO8601(text.data(), text.size(), unit, value, &zone);
  });
  if (!isMicros && !isNanos) return kCsvText;
  constexpr unsigned kHeld = kCsvHeld | kCsvMayHold;
  if (zone) {
    const unsigned kinds = (isMicros ? kCsvZonedTime : 0U) | (isNanos ? kCsvNanoZonedTime : 0U);
    // What is read is an instant: the hours between it and the clock that another zone's text
    // shows are not in it.
    return text.back() == 'Z' ? kinds | kHeld : kinds;
  }
  return (text.size() == 10 ? kCsvDate : 0U) | (isMicros ? kCsvDateTime : 0U) |
         (isNanos ? kCsvNanoDateTime : 0U) | kHeld;
}

unsigned TimeKinds(std::string_view text) {
  static const arrow::Time64Type micros(arrow::TimeUnit::MICRO);
  static const arrow::Time64Type nanos(arrow::TimeUnit::NANO);
  if (text.size() < 5 || text[2] != ':') return kCsvText;
  const auto [isMicros, isNanos] = UnitsOf([&](arrow::TimeUnit::type unit, std::int64_t* value) {
    const auto& type = unit == arrow::TimeUnit::MICRO ? micros : nanos;
    return arrow::internal::ParseValue(type, text.data(), text.size(), value);
  });
  if (!isMicros && !isNanos) return kCsvText;
  return (isMicros ? kCsvTime : 0U) | kCsvNanoTime | kCsvHeld | kCsvMayHold;
}

unsigned NumberKinds(std::string_view text) {
  const unsigned plain = PlainNumberKinds(text);
  if (plain != kCsvText) return plain;
  double value = 0.0;
  if (!ParseNumber(text, &value)) return kCsvText;
  const unsigned bare = PlainNumberKinds(WithoutBlanks(text));
  return bare != kCsvText ? bare : kCsvNumber | kCsvMayHold;
}

// A number as its digits from the first that is not zero, and the power of ten of that one.
struct Digits {
  std::string fDigits;
  int fExponent = 0;
  bool operator==(const Digits&) const = default;
};

// REQUIRES: a number with digits.
Digits DigitsOf(std::string_view number) {
  const std::size_t e = std::min(number.find_first_of("eE"), number.size());
  Digits digits;
  int places = 0;  // digits before the point that count, or minus the zeros behind it
  bool isBehindPoint = false;
  for (const char c : number.substr(0, e)) {
    if (c == '.') isBehindPoint = true;
    if (!IsDigit(c)) continue;
    if (c != '0' || !digits.fDigits.empty()) digits.fDigits += c;
    if (!isBehindPoint && !digits.fDigits.empty()) ++places;
    if (isBehindPoint && digits.fDigits.empty()) --places;
  }
  if (digits.fDigits.empty()) return digits;
  int exponent = 0;
  if (e < number.size()) {
    const std::size_t first = number[e + 1] == '+' ? e + 2 : e + 1;
    std::from_chars(number.data() + first, number.data() + number.size(), exponent);
  }
  digits.fExponent = exponent + places - 1;
  return digits;
}

constexpr std::array<std::uint64_t, 19> PowersOfTen() {
  std::array<std::uint64_t, 19> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
  return powers;
}

// Whether the double nearest to `digits` / 10^places, rounded to so many places, is that again; by
// whole numbers, for those that are small enough. False means nothing.
bool IsNearestHeld(std::uint64_t digits, int places, double value) {
  __extension__ using Wide = unsigned __int128;
  constexpr int kMantissaBits = 53;
  static constexpr std::array<std::uint64_t, 19> kPowers = PowersOfTen();
  int exponent = 0;
  const double fraction = std::frexp(std::abs(value), &exponent);
  const int bits = kMantissaBits - exponent;  // value = mantissa / 2^bits
  if (bits < 0 || bits > 63 || places >= static_cast<int>(kPowers.size())) return false;
  const auto mantissa = static_cast<std::uint64_t>(fraction * 9007199254740992.0);
  const Wide held = Wide{mantissa} * kPowers[static_cast<std::size_t>(places)];
  const Wide said = static_cast<Wide>(digits) << bits;
  return 2 * (held > said ? held - said : said - held) < Wide{1} << bits;
}

// The same for a number as it stands, where it is one of few digits without an exponent.
bool IsPlainHeld(std::string_view number, double value) {
  constexpr std::size_t kFewDigits = 19;  // 18 of them, and a point
  const std::string_view bare = number[0] == '-' ? number.substr(1) : number;
  if (bare.size() > kFewDigits || !std::isfinite(value)) return false;
  std::uint64_t digits = 0;
  std::size_t point = bare.size();
  for (std::size_t i = 0; i < bare.size(); ++i) {
    if (bare[i] == '.') {
      point = i + 1;
    } else if (IsDigit(bare[i])) {
      digits = digits * 10 + static_cast<std::uint64_t>(bare[i] - '0');
    } else {
      return false;
    }
  }
  return IsNearestHeld(digits, static_cast<int>(bare.size() - point), value);
}

}  // namespace

unsigned CsvKindsOf(std::string_view text) {
  if (text.empty() || text.size() > kCsvLongestOther) return kCsvText;
  if (const unsigned number = NumberKinds(text); number != kCsvText) return number;
  if (IsBoolean(text)) return kCsvBoolean | kCsvHeld | kCsvMayHold;
  if (const unsigned time = TimeKinds(text); time != kCsvText) return time;
  return DateKinds(text);
}

std::shared_ptr<arrow::DataType> CsvTypeOf(unsigned kinds) {
  if (kinds == kCsvText) return arrow::utf8();
  if (kinds == kCsvAll) return arrow::null();
  if (kinds & kCsvNumber) return arrow::float64();
  if (kinds & kCsvBoolean) return arrow::boolean();
  if (kinds & kCsvDate) return arrow::date32();
  if (kinds & kCsvDateTime) return arrow::timestamp(arrow::TimeUnit::MICRO);
  if (kinds & kCsvNanoDateTime) return arrow::timestamp(arrow::TimeUnit::NANO);
  if (kinds & kCsvZonedTime) return arrow::timestamp(arrow::TimeUnit::MICRO, "UTC");
  if (kinds & kCsvNanoZonedTime) return arrow::timestamp(arrow::TimeUnit::NANO, "UTC");
  return arrow::time64(kinds & kCsvTime ? arrow::TimeUnit::MICRO : arrow::TimeUnit::NANO);
}

bool CsvHoldsDigits(std::string_view number) {
  double value = 0.0;
  if (!ParseNumber(number, &value)) return false;
  const std::string_view bare = WithoutBlanks(number);
  if (!IsPadded(bare) && IsPlainHeld(bare, value)) return true;  // as most are
  const bool isWord = bare.find_first_of("0123456789") == std::string_view::npos;
  if (isWord || !std::isfinite(value)) return isWord;
  if (IsPadded(bare)) return false;
  const Digits said = DigitsOf(bare);
  if (said.fDigits.empty()) return true;
  std::array<char, kCsvLongestOther + 32> text;
  const auto printed =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific,
                    static_cast<int>(said.fDigits.size()) - 1);
  return said == DigitsOf({text.data(), static_cast<std::size_t>(printed.ptr - text.data())});
}

bool CsvLosesDigits(std::string_view number) {
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
