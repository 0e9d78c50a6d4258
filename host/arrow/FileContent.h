// What data are by their first and last bytes, whatever their file is called.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/data/FileFormat.h"

namespace MCHost {

// Parquet, Arrow or a workbook; nothing for anything else, text among it, and for what is no file
// that can be read again, which is left alone. Throws HostIOError, which says how it is read, for
// the file of a database.
std::optional<FileFormat> FormatOfContent(const std::string& path);

// Of what an input that is taken for text holds: throws HostIOError (`name`), which says how it is
// read, where that is Parquet, Arrow or a workbook.
void CheckTextContent(std::string_view bytes, const std::string& name);

}  // namespace MCHost
