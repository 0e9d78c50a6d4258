// A sheet of a workbook, row by row as it stands there.
//
// What reads such a format implements this; SheetRows makes cases of the rows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/arrow/CellRows.h"

namespace MCHost {

struct SheetRow {
  std::int64_t fNumber = 0;     // in the sheet, from 1
  std::int64_t fTimes = 1;      // so many rows that are the same, from that one on
  std::vector<RowCell> fCells;  // by column of the sheet; those behind the last are empty
};

// What the user should know of a sheet once it was read.
struct SheetFindings {
  std::int64_t fErrors = 0;    // cells that show an error, which have no value
  std::string fFirstError;     // "C7, #N/A"
  std::int64_t fFormulas = 0;  // cells whose formula nobody has calculated
  std::string fFirstMerged;    // "A5:A9", or empty
};

class ISheet {
 public:
  virtual ~ISheet() = default;
  // The next row; false behind the last. Throws HostIOError.
  virtual bool Next(SheetRow& row) = 0;
  virtual const SheetFindings& Findings() const = 0;
};

// What a workbook has, and which of its sheets is to be read.
struct SheetChoice {
  std::vector<std::string> fNames;
  std::size_t fChosen = 0;
};

// The first sheet, or the one that is asked for by its name. Throws HostIOError where there is
// none.
SheetChoice ChooseSheet(const std::string& path, std::vector<std::string> names,
                        const std::string& asked);

// "C7" of a column from 0 and a row from 1.
std::string CellName(std::size_t column, std::int64_t row);

}  // namespace MCHost
