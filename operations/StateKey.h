// The keys that saved states are signed with, and held against: secrets that files hold.
#pragma once

#include <string>

namespace PredSelect {

// What the file holds, without a line's end behind it; empty for an empty path. Throws
// MCHost::HostIOError for a file that cannot be read, that others than its owner and group may read
// or change, and that holds fewer than 16 bytes or more than 4096.
std::string ReadStateKey(const std::string& path);

}  // namespace PredSelect
