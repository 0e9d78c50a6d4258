// Whoever brings a request to all parts of a table, and their answers back as one.
#pragma once

#include <string>

namespace MCHost {

// What a pass goes over. Do not renumber: callers of the C interface have the numbers.
enum class PassOver {
  kRows = 1,      // the cases of each part
  kRowsKeep = 2,  // the same, and each part keeps the codes that it makes of them
  kCodes = 3      // these codes
};

class IPartPasses {
 public:
  virtual ~IPartPasses() = default;
  // The merged answer of all parts. Throws HostIOError, also for a pass that was cancelled: whoever
  // asks then knows that from the session.
  virtual std::string Pass(PassOver over, const std::string& request) = 0;
};

}  // namespace MCHost
