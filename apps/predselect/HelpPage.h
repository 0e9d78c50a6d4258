// The pages of help, at 80 columns.
#pragma once

#include <string>

namespace PredSelectApp {

struct HelpProgram;
struct HelpVerb;

// What the program is, its verbs by group, its notes.
std::string HelpPage(const HelpProgram& program);

// What the verb does, how it is called, its options by group, its notes.
std::string HelpPage(const HelpVerb& verb);

// What is shown to whoever types the program's name alone.
std::string ShortHelp(const HelpProgram& program);

// A text in lines of the page, behind so many blanks. A line that begins with blanks stays as it
// is.
std::string Wrap(const std::string& text, std::size_t indent);

}  // namespace PredSelectApp
