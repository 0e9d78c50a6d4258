// Sizes of memory as they are typed, and how what is typed is shared out.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace PredSelectApp {

// In kilobytes: a number, or a number with K, M, G or T (of 1024 each, in either case, with or
// without a B behind it). Nothing for any other text, and for less than the commands take.
std::optional<double> ParseMemorySize(const std::string& text);

// Of so many kilobytes, the bytes that cells of the table may take. The other half is for the cases
// of a command, whatever the table.
std::size_t KeptBytesWithin(double kilobytes);

// Kilobytes for the cases of a command, of so many that are given and of which the table has taken
// bytes.
double MemoryBeside(std::size_t keptBytes, double kilobytes);

}  // namespace PredSelectApp
