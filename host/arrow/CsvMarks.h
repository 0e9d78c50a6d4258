// Which marks the numbers of a text have.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/arrow/CsvNumbers.h"

namespace MCHost {

class CsvSample;

struct CsvMarks {
  CsvNumbers fNumbers;
  // A number that could be read with a decimal comma or with one between thousands, and nothing
  // tells which; empty where there is none.
  std::string fUnsure;
};

// The marks that make more columns of the sample numbers than decimal points alone do, without
// taking one away. What is said stays. Rows from `firstRow` on are looked at.
CsvMarks MarksOf(const CsvSample& sample, std::size_t firstRow, const ReadingOptions& said);

}  // namespace MCHost
