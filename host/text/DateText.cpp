#include "host/text/DateText.h"

#include <cstdlib>

namespace MCHost {

namespace {

constexpr std::int64_t kSecondsADay = 86400;

void AppendPadded(std::string& text, std::int64_t value, std::size_t width) {
  const std::string digits = std::to_string(value);
  if (digits.size() < width) text.append(width - digits.size(), '0');
  text += digits;
}

// The part of a second behind a point, without zeros at the end; nothing for none.
void AppendFraction(std::string& text, std::int64_t part, std::int64_t unitsASecond) {
  if (part == 0) return;
  text += '.';
  AppendPadded(text, part, std::to_string(unitsASecond).size() - 1);
  text.erase(text.find_last_not_of('0') + 1);
}

}  // namespace

// By eras of 400 years that begin in March.
void AppendDate(std::string& text, std::int64_t days) {
  constexpr std::int64_t kDaysAnEra = 146097;
  days += 719468;  // since 0000-03-01
  const std::int64_t era = (days >= 0 ? days : days - kDaysAnEra + 1) / kDaysAnEra;
  const std::int64_t ofEra = days - era * kDaysAnEra;
  const std::int64_t yearOfEra =
      (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / (kDaysAnEra - 1)) / 365;
  const std::int64_t ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t fromMarch = (5 * ofYear + 2) / 153;
  const std::int64_t month = fromMarch < 10 ? fromMarch + 3 : fromMarch - 9;
  const std::int64_t year = era * 400 + yearOfEra + (month <= 2 ? 1 : 0);
  if (year < 0) text += '-';
  AppendPadded(text, year < 0 ? -year : year, 4);
  text += '-';
  AppendPadded(text, month, 2);
  text += '-';
  AppendPadded(text, ofYear - (153 * fromMarch + 2) / 5 + 1, 2);
}

void AppendTime(std::string& text, std::int64_t time, std::int64_t unitsASecond) {
  const std::int64_t seconds = time / unitsASecond;
  AppendPadded(text, seconds / 3600, 2);
  text += ':';
  AppendPadded(text, seconds / 60 % 60, 2);
  text += ':';
  AppendPadded(text, seconds % 60, 2);
  AppendFraction(text, time % unitsASecond, unitsASecond);
}

void AppendDateTime(std::string& text, std::int64_t time, std::int64_t unitsASecond) {
  const std::int64_t unitsADay = kSecondsADay * unitsASecond;
  const std::int64_t days = time / unitsADay - (time % unitsADay < 0 ? 1 : 0);
  AppendDate(text, days);
  text += 'T';
  AppendTime(text, (time % unitsADay + unitsADay) % unitsADay, unitsASecond);
}

void AppendSeconds(std::string& text, std::int64_t duration, std::int64_t unitsASecond) {
  if (duration < 0) text += '-';
  text += std::to_string(std::abs(duration / unitsASecond));
  AppendFraction(text, std::abs(duration % unitsASecond), unitsASecond);
}

}  // namespace MCHost
