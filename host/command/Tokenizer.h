// From the text of a command to its tokens.
//
// Blanks and line ends separate tokens and have no other meaning; one of / = ( ) : is a token by
// itself. Quotes ' and " enclose a token on one line and are doubled inside it. Any other run of
// characters is a number when all of it reads as one (decimal point, optional exponent, whatever
// the locale) and a word otherwise. A period at the end of the text ends the command.
#pragma once

#include <string>
#include <vector>

#include "host/command/TokenInfoObj.h"

namespace MCHost {

// The tokens of one command, the last of them kEnd. `line` and `column` say where the text starts
// in the one it was taken from. Nothing is refused here: what can not be used carries a problem.
std::vector<TokenInfoObj> Tokenize(const std::string& text, int line, int column);

// True when the whole text is a number; it is then stored. Infinities and NaN are no numbers.
// `inRange` becomes false, and the value 0, for one that no double can hold.
bool ReadNumber(const std::string& text, double& value, bool& inRange);

}  // namespace MCHost
