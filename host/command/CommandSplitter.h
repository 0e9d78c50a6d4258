// From the text of a session to its commands.
//
// A command ends with a period at a line's end or with the text; and within a line with a period
// that a blank and the word of a command follow, outside quotes, which never go beyond their line.
// One that starts with `*` is a comment, which goes on to a line's end, and left out, as is one
// without any text.
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

// The commands in order. A byte order mark at the start of the text is skipped. `words`: those that
// begin a command within a line, in full or cut to three letters or more; none for lines alone.
std::vector<CommandText> SplitCommands(const std::string& text,
                                       const std::vector<std::string>& words = {});

}  // namespace MCHost
