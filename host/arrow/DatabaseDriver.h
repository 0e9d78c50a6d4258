// A driver of databases: a shared library that is loaded when it is needed.
#pragma once

#include <string>
#include <vector>

#include "host/arrow/Adbc.h"
#include "host/arrow/DatabaseAddress.h"

namespace MCHost {

// The driver of a kind, loaded once for the process, which keeps it. It is looked for at the
// places, in order (each the library, a folder that has it, or a Python environment with the
// package that brings it), and then where the linker looks. `source` names the data in messages.
// Throws HostIOError, which says what to install.
AdbcDriver& LoadDriver(const DatabaseKind& kind, const std::vector<std::string>& places,
                       const std::string& source);

}  // namespace MCHost
