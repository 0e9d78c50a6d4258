// What the sheets of an .xlsx workbook share: their names, texts and formats.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/SheetMoments.h"

namespace MCHost {

struct XlsxBook {
  struct Sheet {
    std::string fName;
    std::string fEntry;  // in the archive
  };

  std::vector<Sheet> fSheets;        // of cells, not of charts
  std::vector<std::string> fTexts;   // cells refer to them by place
  std::vector<SheetFormat> fStyles;  // of cells, by place
  double fDaysBefore = 0.0;          // the day that is 0, from 1899-12-30

  // Throws HostIOError.
  static std::shared_ptr<const XlsxBook> Read(const std::string& path);
};

}  // namespace MCHost
