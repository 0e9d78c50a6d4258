// One row of the notes that say how a run was made.
#pragma once

#include <optional>

#include "host/output/OutputText.h"

namespace MCHost {

struct OutputNote {
  // Codes are part of the interface.
  enum Kind { kFile = 2, kNewVariable = 3, kMethod = 4 };

  int fKind = kMethod;
  std::optional<OutputText> fGroup;  // the heading that the row stands under
  OutputText fTitle;
  OutputText fText;

  bool operator==(const OutputNote&) const = default;
};

}  // namespace MCHost
