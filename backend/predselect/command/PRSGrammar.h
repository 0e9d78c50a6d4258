// The grammars of the two commands: every subcommand, parameter, bound and help text, declared
// once; the defaults are those of PRSOptions. The parser, its messages and the help come from here.
#pragma once

#include "host/command/CommandDescriptor.h"

namespace PRSGrammar {

inline constexpr const char* kSelectPred = "SELECTPRED";
inline constexpr const char* kNaiveBayes = "NAIVEBAYES";

// The command's descriptor, named and empty.
CommandDescriptor NewCommand(bool univariable);

// Adds the grammar to it.
void Declare(CommandDescriptor& command, bool univariable);

}  // namespace PRSGrammar
