// How often commands go over the cases, as far as their text alone tells.
#pragma once

#include <string>

namespace PredSelect {

// Whether the text is one command that goes over the cases once, so that keeping them would be in
// vain: a SELECTPRED without the table of effects. In doubt false; nothing but time and memory may
// depend on it.
bool ReadsOnce(const std::string& commands);

}  // namespace PredSelect
