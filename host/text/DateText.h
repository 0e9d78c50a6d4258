// Dates and times as texts (ISO 8601), from the numbers that data hold.
#pragma once

#include <cstdint>
#include <string>

namespace MCHost {

// Days since 1970-01-01 in the Gregorian calendar: 2024-02-29.
void AppendDate(std::string& text, std::int64_t days);

// Units since midnight: 12:30:00.5.
void AppendTime(std::string& text, std::int64_t time, std::int64_t unitsASecond);

// Units since 1970-01-01 00:00: 2024-02-29T12:30:00.5.
void AppendDateTime(std::string& text, std::int64_t time, std::int64_t unitsASecond);

// Units of a duration, as seconds: 90.5.
void AppendSeconds(std::string& text, std::int64_t duration, std::int64_t unitsASecond);

}  // namespace MCHost
