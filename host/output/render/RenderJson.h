// The output document as one JSON document, for programs.
//
// Paths and texts are keys, variable names and values; "strings" maps every key that was used to
// its displayed text. Numbers stand at full precision, a missing statistic is null, a list cell a
// list.
#pragma once

#include <string>

namespace MCHost {

class OutputDocument;

// Indented, in the order in which things were made, with a line end. Bytes that are not UTF-8 are
// replaced.
std::string RenderJson(const OutputDocument& document);

}  // namespace MCHost
