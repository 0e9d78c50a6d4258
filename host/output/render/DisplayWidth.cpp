#include "host/output/render/DisplayWidth.h"

#include <utf8proc.h>

#include <algorithm>

namespace MCHost {
namespace {

struct Glyph {
  std::size_t fBytes;
  std::size_t fWidth;
};

Glyph FirstGlyph(std::string_view text) {
  utf8proc_int32_t codepoint = 0;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  const auto read = utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &codepoint);
  if (read <= 0) return {1, 1};
  const int width = utf8proc_charwidth(codepoint);
  return {static_cast<std::size_t>(read), static_cast<std::size_t>(std::max(width, 0))};
}

std::vector<std::string_view> Split(std::string_view text, char at) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find(at);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

// How many bytes of a word fit; at least one glyph, so that breaking ends.
std::size_t FittingBytes(std::string_view word, std::size_t width) {
  std::size_t bytes = 0;
  std::size_t used = 0;
  while (bytes < word.size()) {
    const Glyph glyph = FirstGlyph(word.substr(bytes));
    if (bytes > 0 && used + glyph.fWidth > width) break;
    bytes += glyph.fBytes;
    used += glyph.fWidth;
  }
  return bytes;
}

void WrapLine(std::string_view source, std::size_t width, std::vector<std::string>& lines) {
  std::string line;
  bool empty = true;
  for (std::string_view word : Split(source, ' ')) {
    if (!empty && DisplayWidth(line) + 1 + DisplayWidth(word) > width) {
      lines.push_back(std::move(line));
      line.clear();
      empty = true;
    }
    if (!empty) line += ' ';
    while (DisplayWidth(word) > width) {
      const std::size_t bytes = FittingBytes(word, width);
      lines.emplace_back(word.substr(0, bytes));
      word.remove_prefix(bytes);
    }
    line += word;
    empty = false;
  }
  lines.push_back(std::move(line));
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Glyph glyph = FirstGlyph(text);
    width += glyph.fWidth;
    text.remove_prefix(glyph.fBytes);
  }
  return width;
}

std::size_t GlyphBytes(std::string_view text, std::size_t at) {
  return FirstGlyph(text.substr(at)).fBytes;
}

std::vector<std::string> WrapText(const std::string& text, std::size_t width) {
  std::vector<std::string> lines;
  for (const std::string_view line : Split(text, '\n')) {
    WrapLine(line, std::max<std::size_t>(width, 1), lines);
  }
  return lines;
}

std::size_t LongestWord(const std::string& text) {
  std::size_t longest = 0;
  for (const std::string_view line : Split(text, '\n')) {
    for (const std::string_view word : Split(line, ' ')) {
      longest = std::max(longest, DisplayWidth(word));
    }
  }
  return longest;
}

std::size_t LongestLine(const std::string& text) {
  std::size_t longest = 0;
  for (const std::string_view line : Split(text, '\n')) {
    longest = std::max(longest, DisplayWidth(line));
  }
  return longest;
}

}  // namespace MCHost
