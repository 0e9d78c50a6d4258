// Raises a message of the running procedure.
#pragma once

#include <string>
#include <vector>

#include "host/output/OutputMessage.h"
#include "host/output/pivot/BpComposite.h"

// How a message is shown: at once, the only way there is.
inline constexpr int kBpShowNow = 2;

// Hands the message to the current session's output. `level` is one of OutputMessage::Level; an
// error also sets the host error flag. `detail` is shown below the text as it stands (a source line
// with its caret, for instance).
void BpError(const BpComposite& text, int show, int level, const std::string& detail = "");

namespace MCHost {

// The same for a key of the string table and literal arguments.
void RaiseMessage(OutputMessage::Level level, const std::string& key,
                  const std::vector<std::string>& arguments = {}, const std::string& detail = "");

}  // namespace MCHost
