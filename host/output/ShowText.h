// From a text of the output to what its reader sees.
#pragma once

#include <string>
#include <vector>

#include "host/output/OutputText.h"

namespace MCHost {

// Fills the placeholders of a text: "^1", "^2", ... with the arguments in order, and the list
// pattern "[%1:<separator>^1:]1" with the items of the first argument (another digit for another
// argument). "{1:<one>|<more>}" is its first wording where the first argument (another digit for
// another one) is shown as 1, else its second. A placeholder without an argument stays as it is.
std::string FillPlaceholders(const std::string& text, const std::vector<OutputText>& arguments);

// The displayed text: a key's entry in the string table with its placeholders filled; a variable's
// or value's label, or its name when it has none; a literal as it is.
std::string ShowText(const OutputText& text);

// The displayed text of a key, its placeholders filled with literal arguments.
std::string KeyText(const std::string& key, const std::vector<std::string>& arguments = {});

// What programs know it by: the key, the variable's name, the value, the literal. A key with
// arguments is its key with the placeholders filled, a bare list pattern the list's text.
std::string TextId(const OutputText& text);

}  // namespace MCHost
