// From the text of a session to its commands.
//
// A command ends with a period at a line's end or with the text. One that starts with `*` is a
// comment and left out, as is one without any text. Quotes need no care here: a quoted text never
// goes beyond its line, so a period that ends a line is never inside one.
#pragma once

#include <string>
#include <vector>

namespace MCHost {

// One command and where it starts in the whole text (line and column from 1).
struct CommandText {
  std::string fText;  // with its period
  int fLine = 1;
  int fColumn = 1;
};

// The commands in order. A byte order mark at the start of the text is skipped.
std::vector<CommandText> SplitCommands(const std::string& text);

}  // namespace MCHost
