#include "host/text/VisibleText.h"

#include <utf8proc.h>

#include <algorithm>

namespace MCHost {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";
constexpr utf8proc_int32_t kFirstPrintable = 0x20;
constexpr utf8proc_int32_t kDelete = 0x7F;

bool IsPlain(char c) { return c >= kFirstPrintable && c < kDelete; }

bool IsSteering(utf8proc_int32_t point) {
  const auto within = [point](utf8proc_int32_t from, utf8proc_int32_t to) {
    return from <= point && point <= to;
  };
  return within(0x80, 0x9F) || within(0x2028, 0x202E) || within(0x2066, 0x2069);
}

// U+2400 + c, and U+2421 for the one behind the printable ones.
std::string PictureOf(utf8proc_int32_t control) {
  const int low = control == kDelete ? 0x21 : control;
  return std::string("\xE2\x90") + static_cast<char>(0x80 + low);
}

}  // namespace

std::string VisibleText(std::string_view text, std::string_view kept) {
  if (std::all_of(text.begin(), text.end(), IsPlain)) return std::string(text);
  std::string shown;
  while (!text.empty()) {
    utf8proc_int32_t point = 0;
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const auto read = utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &point);
    const bool isControl = read == 1 && (point < kFirstPrintable || point == kDelete);
    if (isControl && kept.find(text.front()) == std::string_view::npos) {
      shown += PictureOf(point);
    } else if (read <= 0 || IsSteering(point)) {
      shown += kReplacement;
    } else {
      shown += text.substr(0, static_cast<std::size_t>(read));
    }
    text.remove_prefix(read > 0 ? static_cast<std::size_t>(read) : 1);
  }
  return shown;
}

std::string MarkdownText(std::string_view text) {
  std::string escaped;
  for (const char c : VisibleText(text, "\n\r\t")) {
    if (c == '|') escaped += '\\';
    escaped += c == '\n' || c == '\r' ? ' ' : c;
  }
  return escaped;
}

}  // namespace MCHost
