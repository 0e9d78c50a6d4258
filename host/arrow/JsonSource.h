// A JSON Lines text, or one that is an array of objects, as a source of data.
#pragma once

#include <memory>

#include "host/arrow/CellRowsSource.h"
#include "host/arrow/TextBytes.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

// Goes over the text once. Throws HostIOError, with a line.
std::unique_ptr<IArrowSource> OpenJsonSource(const TextBytes& bytes, CellRules rules);

}  // namespace MCHost
