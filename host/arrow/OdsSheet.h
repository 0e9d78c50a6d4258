// A sheet of an OpenDocument spreadsheet.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/Sheet.h"

namespace MCHost {

// The names of its sheets. Throws HostIOError.
std::vector<std::string> OdsSheetNames(const std::string& path);

// Throws HostIOError.
std::unique_ptr<ISheet> OpenOdsSheet(const std::string& path, std::size_t sheet);

}  // namespace MCHost
