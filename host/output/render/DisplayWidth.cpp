#include "host/output/render/DisplayWidth.h"

#include <utf8proc.h>

#include <algorithm>

namespace MCHost {
namespace {

// Of a text, or of its first glyph.
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

// The start of a word that fits; at least one glyph, so that breaking ends.
Glyph FittingPart(std::string_view word, std::size_t width) {
  Glyph part{0, 0};
  while (part.fBytes < word.size()) {
    const Glyph glyph = FirstGlyph(word.substr(part.fBytes));
    if (part.fBytes > 0 && part.fWidth + glyph.fWidth > width) break;
    part.fBytes += glyph.fBytes;
    part.fWidth += glyph.fWidth;
  }
  return part;
}

void WrapLine(std::string_view source, std::size_t width, std::vector<std::string>& lines) {
  std::string line;
  std::size_t used = 0;
  bool empty = true;
  for (std::string_view word : Split(source, ' ')) {
    std::size_t left = DisplayWidth(word);
    if (!empty && used + 1 + left > width) {
      lines.push_back(std::move(line));
      line.clear();
      used = 0;
      empty = true;
    }
    if (!empty) line += ' ';
    used += empty ? 0 : 1;
    while (left > width) {
      const Glyph part = FittingPart(word, width);
      lines.emplace_back(word.substr(0, part.fBytes));
      word.remove_prefix(part.fBytes);
      left -= part.fWidth;
    }
    line += word;
    used += left;
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

std::string ShortText(const std::string& text, std::size_t width) {
  if (DisplayWidth(text) <= width) return text;
  if (width == 1) return "…";
  return text.substr(0, FittingPart(text, width - 1).fBytes) + "…";
}

}  // namespace MCHost
