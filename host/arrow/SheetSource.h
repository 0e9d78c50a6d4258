// A sheet of a workbook (.xlsx) or of an OpenDocument spreadsheet (.ods) as a source of data.
//
// Dates are what a cell's format shows as such; formulas are what they came to when the file was
// saved; cells that show an error are missing.
#pragma once

#include <memory>
#include <string>

#include "host/arrow/CellRowsSource.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

// Whether the file begins as a workbook does, whatever its name, or as an old one, which is
// refused.
bool IsSheetFile(const std::string& path);

// The sheet of a name, the first without one, of a file that messages call `name`. Goes over it
// once. Throws HostIOError, with a cell.
std::unique_ptr<IArrowSource> OpenSheet(const std::string& path, const std::string& name,
                                        const std::string& sheet, CellRules rules);

}  // namespace MCHost
