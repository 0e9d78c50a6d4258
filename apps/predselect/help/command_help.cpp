// Prints what the commands' grammars say of themselves, for the program's help and the command
// reference: `command_help syntax` as a C++ string literal, `command_help markdown` as a document.

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
    if (!text.empty()) text += "\n";
    text += markdown ? MCHost::CommandHelpMarkdown(command) : MCHost::CommandSyntax(command);
  }
  std::printf(markdown ? "%s" : "R\"(%s)\"\n", text.c_str());
  return 0;
}
