// A text as it may be sent to a terminal or a page.
#pragma once

#include <string>
#include <string_view>

namespace MCHost {

// The text with visible characters for what would steer a terminal or turn the order of letters
// round: a picture (U+2400 and following) for each control character of ASCII, U+FFFD for the
// control characters beyond ASCII, for line and paragraph separators, for directional embeddings,
// overrides and isolates, and for each byte that is no UTF-8. The control characters in `kept`
// stay: line ends for texts that may have several lines. The result is always UTF-8.
std::string VisibleText(std::string_view text, std::string_view kept = "\n");

// The same as a cell of a table in Markdown: on one line, with nothing that ends the cell.
std::string MarkdownText(std::string_view text);

}  // namespace MCHost
