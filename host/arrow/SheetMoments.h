// Dates and times of sheets, which are numbers of days that a cell's format shows as such.
#pragma once

#include <string>
#include <string_view>

#include "host/arrow/CellRows.h"

namespace MCHost {

// What a format shows a number as.
enum class SheetFormat { kNumber, kDate, kClock, kElapsed };

// Of a format by its text ("yyyy-mm-dd", "[h]:mm"), and by the number of one that needs no text.
SheetFormat FormatOfCode(std::string_view code);
SheetFormat FormatOfNumber(int number);

// Makes a number of days since 1899-12-30 what its format shows: a date or a date with a time, a
// time of day, seconds of a duration. What is no such number stays as it is. Parts of a millisecond
// are noise.
void ShowMoment(RowCell& cell, SheetFormat format, double daysBefore);

// An ISO 8601 duration ("PT12H30M05S") as seconds, and as a time of day where it is one.
void ShowDuration(RowCell& cell);

}  // namespace MCHost
