// Shows a place in the user's text: the line it stands on, and a caret under it.
#pragma once

#include <cstddef>
#include <string>

namespace MCHost {

// The line of `text` that holds the byte `offset` (at most the length of the text), and below it a
// line with a caret under that place. Both are indented by two blanks. The caret is placed by the
// width that characters take on a terminal; tabs are kept as they are.
std::string ShowPlace(const std::string& text, std::size_t offset);

}  // namespace MCHost
