// What is said of a command line that cannot be taken: in words of its user, with the nearest thing
// that can be.
#pragma once

#include <string>
#include <vector>

#include "apps/predselect/HelpModel.h"

namespace PredSelectApp {

// What is wrong where the first word is no verb of the program; empty where it is one, or an
// option.
std::string UnknownVerb(const HelpProgram& program, const std::string& word);

// What is wrong where one of the words is an option that the verb does not have; empty for none.
// Values of options are passed over.
std::string UnknownOption(const std::vector<HelpOption>& options,
                          const std::vector<std::string>& words);

// The parser's own words (`what`) made plain.
std::string PlainUsageError(const std::string& what);

}  // namespace PredSelectApp
