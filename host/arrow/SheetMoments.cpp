#include "host/arrow/SheetMoments.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>

namespace MCHost {

namespace {

constexpr std::int64_t kDayMillis = 86400000;
constexpr double kEpoch = 25569.0;      // 1970-01-01, in days since 1899-12-30
constexpr double kLastDay = 2958466.0;  // 10000-01-01
constexpr double kLostLeapDay = 60.0;   // the first day counted as if 1900 had a 29 February

bool ReadDouble(std::string_view text, double& value) {
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  return read.ec == std::errc{} && read.ptr == text.data() + text.size();
}

std::string ClockText(std::int64_t millis) {
  std::string text =
      fmt::format("{:02}:{:02}:{:02}", millis / 3600000, millis / 60000 % 60, millis / 1000 % 60);
  if (millis % 1000 != 0) text += fmt::format(".{:03}", millis % 1000);
  return text;
}

std::string DateText(std::int64_t day) {
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
}

void SetSeconds(RowCell& cell, std::int64_t millis) {
  cell.fKind = RowCell::kNumber;
  const std::int64_t size = std::abs(millis);
  cell.fText = (millis < 0 ? "-" : "") + std::to_string(size / 1000);
  if (size % 1000 != 0) cell.fText += fmt::format(".{:03}", size % 1000);
}

void SetText(RowCell& cell, std::string text) {
  cell.fKind = RowCell::kText;
  cell.fText = std::move(text);
}

// The first section of a format, without what it shows as it stands: "...", \x, [Red], AM/PM.
// Brackets around hours, minutes or seconds mean time that has passed, which is told apart.
std::string BareCode(std::string_view code, bool& isElapsed) {
  std::string bare;
  for (std::size_t i = 0; i < code.size() && code[i] != ';'; ++i) {
    const char c = static_cast<char>(code[i] | 0x20);  // letters as small ones
    if (code[i] == '"') {
      i = std::min(code.find('"', i + 1), code.size() - 1);
    } else if (code[i] == '[') {
      const char first = i + 1 < code.size() ? static_cast<char>(code[i + 1] | 0x20) : ' ';
      const std::size_t end = std::min(code.find(']', i), code.size() - 1);
      const std::string_view inside = code.substr(i + 1, end - i - 1);
      const bool isUnit = (first == 'h' || first == 'm' || first == 's') &&
                          inside.find_first_not_of(inside.substr(0, 1)) == std::string_view::npos;
      isElapsed = isElapsed || isUnit;
      i = end;
    } else if (code[i] == '\\' || code[i] == '_' || code[i] == '*') {
      ++i;
    } else if (c == 'a' && (code.substr(i, 5) == "AM/PM" || code.substr(i, 3) == "A/P")) {
      bare += 'h';
      i += code[i + 1] == '/' ? 2 : 4;
    } else {
      bare += c;
    }
  }
  return bare;
}

}  // namespace

SheetFormat FormatOfCode(std::string_view code) {
  bool isElapsed = false;
  const std::string bare = BareCode(code, isElapsed);
  if (isElapsed) return SheetFormat::kElapsed;
  if (bare == "general") return SheetFormat::kNumber;
  const auto has = [&bare](const char* letters) {
    return bare.find_first_of(letters) != std::string::npos;
  };
  if (has("yd")) return SheetFormat::kDate;
  if (has("hs")) return SheetFormat::kClock;
  return has("m") ? SheetFormat::kDate : SheetFormat::kNumber;
}

SheetFormat FormatOfNumber(int number) {
  const auto isIn = [number](int first, int last) { return first <= number && number <= last; };
  if (isIn(14, 17) || number == 22 || isIn(27, 31) || number == 36 || isIn(50, 58)) {
    return SheetFormat::kDate;
  }
  if (isIn(18, 21) || isIn(32, 35) || number == 45 || number == 47) return SheetFormat::kClock;
  return number == 46 ? SheetFormat::kElapsed : SheetFormat::kNumber;
}

void ShowMoment(RowCell& cell, SheetFormat format, double daysBefore) {
  double days = 0.0;
  if (format == SheetFormat::kNumber || cell.fKind != RowCell::kNumber) return;
  if (!ReadDouble(cell.fText, days) || !(std::abs(days) < kLastDay)) return;
  const auto millisOf = [](double x) { return std::llround(x * static_cast<double>(kDayMillis)); };
  if (format == SheetFormat::kElapsed) return SetSeconds(cell, millisOf(days));
  if (days < 0.0) return;
  if (format == SheetFormat::kClock) {
    return SetText(cell, ClockText(millisOf(days - std::floor(days)) % kDayMillis));
  }
  if (daysBefore == 0.0 && days < kLostLeapDay) days += 1.0;
  const std::int64_t millis = millisOf(days + daysBefore - kEpoch);
  const std::int64_t clock = (millis % kDayMillis + kDayMillis) % kDayMillis;
  const std::string date = DateText((millis - clock) / kDayMillis);
  SetText(cell, clock == 0 ? date : date + "T" + ClockText(clock));
}

void ShowDuration(RowCell& cell) {
  double seconds = 0.0;
  double sign = 1.0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < cell.fText.size(); ++i) {
    const char c = cell.fText[i];
    if ((c >= '0' && c <= '9') || c == '.') continue;
    double count = 0.0;
    const std::string_view digits = std::string_view(cell.fText).substr(start, i - start);
    const double unit = c == 'D' ? 86400.0 : c == 'H' ? 3600.0 : c == 'M' ? 60.0 : 1.0;
    if (ReadDouble(digits, count)) seconds += count * unit;
    if (c == '-') sign = -1.0;
    start = i + 1;
  }
  const std::int64_t millis = std::llround(sign * seconds * 1000.0);
  SetSeconds(cell, millis);
  if (millis >= 0 && millis < kDayMillis) cell.fClock = ClockText(millis);
}

}  // namespace MCHost
