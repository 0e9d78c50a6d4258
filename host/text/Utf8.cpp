#include "host/text/Utf8.h"

#include <utf8proc.h>

namespace MCHost {

bool IsUtf8(std::string_view text) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  auto left = static_cast<utf8proc_ssize_t>(text.size());
  while (left > 0) {
    utf8proc_int32_t point = 0;
    const utf8proc_ssize_t used = utf8proc_iterate(bytes, left, &point);
    if (used <= 0) return false;
    bytes += used;
    left -= used;
  }
  return true;
}

}  // namespace MCHost
