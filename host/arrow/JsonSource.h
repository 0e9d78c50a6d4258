// A JSON Lines file, or one that is an array of objects, as a source of data.
#pragma once

#include <memory>
#include <string>

#include "host/arrow/CellRowsSource.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

// Goes over the file once. Throws HostIOError, with a line.
std::unique_ptr<IArrowSource> OpenJsonFile(const std::string& path, CellRules rules);

// The same for a text that is there. `name` names it in messages.
std::unique_ptr<IArrowSource> OpenJsonText(const std::string& name, std::string text,
                                           CellRules rules);

}  // namespace MCHost
