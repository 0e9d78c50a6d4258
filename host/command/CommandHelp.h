// What a command's descriptor says, for people: made from the same declarations that the parser
// reads, so that it can not be out of date.
#pragma once

#include <string>

class CommandDescriptor;

namespace MCHost {

// The syntax as it is typed, a subcommand a line, optional parts in brackets.
std::string CommandSyntax(const CommandDescriptor& command);

// The syntax, then every subcommand with its parameters: what they take, default, meaning. Plain
// text for a terminal of at least 80 columns.
std::string CommandHelpText(const CommandDescriptor& command);

// The same as a section of Markdown, with a table a subcommand.
std::string CommandHelpMarkdown(const CommandDescriptor& command);

}  // namespace MCHost
