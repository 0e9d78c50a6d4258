#include "host/data/StringPool.h"

#include <algorithm>

namespace MCHost {

std::int32_t StringPool::Code(std::string_view text) {
  const auto found = fCodes.find(text);
  if (found != fCodes.end()) return found->second;
  const std::int32_t code = Size();
  fStrings.emplace_back(text);
  fCodes.emplace(fStrings.back(), code);
  fMaxBytes = std::max(fMaxBytes, text.size());
  return code;
}

}  // namespace MCHost
