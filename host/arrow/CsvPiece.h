// A quick look at whole lines of a CSV file, without taking them apart.
#pragma once

#include <string_view>

namespace MCHost {

struct CsvLook {
  char fDelimiter = ',';
  char fQuote = '"';  // 0 for none
  char fDecimal = '.';
};

// True only where CsvInspector would, whatever columns the lines have, say nothing against their
// characters and quotes, each line ends outside quotes, and no field of more than kCsvLongestOther
// bytes can be read as a number. False where that is not plain at once. REQUIRES: the piece begins
// where a line does, and ends where one does or with the file.
bool IsPlainCsvPiece(std::string_view piece, const CsvLook& look);

}  // namespace MCHost
