// Prints what the commands' grammars say of themselves, for the program's help and the command
// reference: `command_help program` as entries of a C++ table, `command_help markdown` as a
// document.

#include <cstdio>
#include <string>

#include "backend/predselect/command/PRSGrammar.h"
#include "host/command/CommandDescriptor.h"
#include "host/command/CommandHelp.h"

namespace {

CommandDescriptor Describe(bool univariable) {
  CommandDescriptor command = PRSGrammar::NewCommand(univariable);
  PRSGrammar::Declare(command, univariable);
  return command;
}

}  // namespace

int main(int argc, char** argv) {
  const bool markdown = argc > 1 && std::string(argv[1]) == "markdown";
  std::string text;
  for (const bool univariable : {true, false}) {
    const CommandDescriptor command = Describe(univariable);
    if (markdown) {
      text += (text.empty() ? "" : "\n") + MCHost::CommandHelpMarkdown(command);
    } else {
      text += "{\"" + command.GetName() + "\", R\"(" + MCHost::CommandHelpText(command) + ")\"},\n";
    }
  }
  std::fputs(text.c_str(), stdout);
  return 0;
}
