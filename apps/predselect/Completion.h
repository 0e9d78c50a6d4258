// What shells need to complete a command line: verbs, options, the words that they take, and files.
#pragma once

#include <string>

namespace PredSelectApp {

struct HelpProgram;

std::string BashCompletion(const HelpProgram& program);
std::string ZshCompletion(const HelpProgram& program);
std::string FishCompletion(const HelpProgram& program);

}  // namespace PredSelectApp
