// A message of a procedure to its user.
#pragma once

#include <string>

#include "host/output/OutputText.h"

namespace MCHost {

struct OutputMessage {
  enum Level { kWarning = 2, kError = 3 };

  int fLevel = kWarning;
  OutputText fText;     // a key with its arguments
  std::string fDetail;  // shown below the text as it stands; empty for none
};

// "warning" or "error".
inline const char* SeverityName(int level) {
  return level >= OutputMessage::kError ? "error" : "warning";
}

}  // namespace MCHost
