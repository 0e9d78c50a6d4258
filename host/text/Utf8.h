// Whether bytes are text.
#pragma once

#include <string_view>

namespace MCHost {

bool IsUtf8(std::string_view text);

}  // namespace MCHost
