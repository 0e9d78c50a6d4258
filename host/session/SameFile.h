// Whether two paths lead to one file, so that writing the one would destroy the other.
#pragma once

#include <string>

namespace MCHost {

// By what the paths lead to, links and "./" included; a path that is empty, "-", or of a device or
// pipe shares its file with none.
bool IsSameFile(const std::string& left, const std::string& right);

}  // namespace MCHost
