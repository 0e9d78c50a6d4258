// Raises a message of the running procedure.
#pragma once

#include <string>

#include "host/output/pivot/BpComposite.h"

// Hands the message to the current session's output. `level` 2 is a warning, 3 an error (which also
// sets the host error flag); `show` 2 shows it at once, the only kind there is. `detail` is shown
// below the text as it stands (a source line with its caret, for instance).
void BpError(const BpComposite& text, int show, int level, const std::string& detail = "");
