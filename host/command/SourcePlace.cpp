#include "host/command/SourcePlace.h"

#include <utf8proc.h>

#include <algorithm>
#include <string_view>

#include "host/text/VisibleText.h"

namespace MCHost {

namespace {

// As wide as `before`, which is UTF-8, on a terminal, of blanks and of the tabs it holds.
std::string PaddingUnder(std::string_view before) {
  std::string padding;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(before.data());
  auto left = static_cast<utf8proc_ssize_t>(before.size());
  while (left > 0) {
    utf8proc_int32_t codepoint = 0;
    const utf8proc_ssize_t used = utf8proc_iterate(bytes, left, &codepoint);
    if (codepoint == '\t') {
      padding += '\t';
    } else {
      padding.append(static_cast<std::size_t>(utf8proc_charwidth(codepoint)), ' ');
    }
    bytes += used;
    left -= used;
  }
  return padding;
}

}  // namespace

std::string ShowPlace(const std::string& text, std::size_t offset) {
  const std::string_view whole = text;
  const std::size_t before = offset == 0 ? std::string_view::npos : whole.rfind('\n', offset - 1);
  const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
  std::string_view line = whole.substr(start, whole.find('\n', offset) - start);
  while (line.ends_with('\r')) line.remove_suffix(1);
  const std::string_view upToPlace = line.substr(0, std::min(offset - start, line.size()));
  return "  " + std::string(line) + "\n  " + PaddingUnder(VisibleText(upToPlace, "\t")) + "^";
}

}  // namespace MCHost
