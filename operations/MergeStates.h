// Counts of several parts of the data, brought together.
#pragma once

#include <string>

struct ComponentFile;

namespace PredSelect {

// Adds what `from` has counted to `into`, as if one run had counted both. `name` is what the
// refusal calls `from`. Throws RequestError (level, where that helps) for states that do not fit
// together; `into` is then as it was.
void MergeStates(ComponentFile& into, const ComponentFile& from, const std::string& name);

}  // namespace PredSelect
