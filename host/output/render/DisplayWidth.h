// Text measured and broken as a terminal shows it: East Asian wide characters count two columns,
// combining marks none.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace MCHost {

// Columns that the text takes on a terminal. A byte that is not UTF-8 counts one.
std::size_t DisplayWidth(std::string_view text);

// Bytes of the character at a place of the text. REQUIRES: at < text.size().
std::size_t GlyphBytes(std::string_view text, std::size_t at);

// The text where it fits, else its beginning and an ellipsis. REQUIRES: width > 0.
std::string ShortText(const std::string& text, std::size_t width);

// The text's lines, none wider than `width`: broken at line ends, then at blanks, and inside a word
// only where the word alone is wider. At least one line.
std::vector<std::string> WrapText(const std::string& text, std::size_t width);

// The width of the widest word, and of the widest line.
std::size_t LongestWord(const std::string& text);
std::size_t LongestLine(const std::string& text);

}  // namespace MCHost
