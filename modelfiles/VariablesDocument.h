// The document that names the variables of a command, for the result documents of feature selection:
// they know target and predictors by index alone. Its type is modelfiles/dtd/fsvariables.dtd.
#pragma once

#include <iosfwd>
#include <string>

struct StateDictionary;

// Returns why it cannot be written (a name or label that XML does not allow), empty when it was.
// `targetIndex` is the target's index in the other documents; predictors count from 0.
[[nodiscard]] std::string WriteVariablesDocument(std::ostream& os, const StateDictionary& dictionary,
                                                 int targetIndex);
