// Whether the first row of a text is its columns' names.
#pragma once

#include <string>
#include <vector>

namespace MCHost {

class CsvSample;

enum class CsvHeader { kNames, kPerhapsNames, kData };

// Whether a cell is nothing, a number (with any of the usual marks), a truth value, a date or time.
bool IsTypedCell(const std::string& text);

// Names, unless the columns below have values of the kinds that the first row has, and that row
// could hardly be one of names: a fraction or a negative number is among them, an empty or repeated
// one, whole numbers that do not ascend (years do), or a text that its column has again. A row of
// nothing but ascending numbers is perhaps one of names.
CsvHeader HeaderOf(const CsvSample& sample);

}  // namespace MCHost
