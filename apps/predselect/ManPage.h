// The manual page of the program.
#pragma once

#include <string>

namespace PredSelectApp {

struct HelpProgram;

// In the language of man(7).
std::string ManPage(const HelpProgram& program);

}  // namespace PredSelectApp
