// A sheet of an .xlsx workbook.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "host/arrow/Sheet.h"
#include "host/arrow/XlsxBook.h"

namespace MCHost {

// Shares the book. Throws HostIOError.
std::unique_ptr<ISheet> OpenXlsxSheet(const std::string& path, std::shared_ptr<const XlsxBook> book,
                                      std::size_t sheet);

}  // namespace MCHost
