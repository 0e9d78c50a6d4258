// Sizes of memory as they are typed.
#pragma once

#include <optional>
#include <string>

namespace PredSelectApp {

// In kilobytes: a number, or a number with K, M, G or T (of 1024 each, in either case, with or
// without a B behind it). Nothing for any other text, and for less than the commands take.
std::optional<double> ParseMemorySize(const std::string& text);

}  // namespace PredSelectApp
