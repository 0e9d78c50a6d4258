// How much memory this process may still take.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace PredSelect {

// What the system and every control group of the process (version 1 and 2, and the groups that
// these are in) leave free, the least of all, in bytes. Copies of files that have not been used
// lately count as free. Nothing where the system does not say. `root` goes before every path that
// is read.
std::optional<std::uint64_t> FreeMemory(const std::string& root = "");

// Half of that, in kilobytes: what "auto" stands for as memory for the cases of a command. Measure
// it once the data have been read. Throws RequestError (memory) where the system does not say.
double AutomaticMemory();

}  // namespace PredSelect
