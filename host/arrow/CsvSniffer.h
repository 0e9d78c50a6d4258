// Finds out from the start of a text how it is written: encoding, delimiter, quote, whether its
// first row holds names, and the marks of its numbers.
//
// It takes a text for what its name says (commas or tabs, double quotes, a header, decimal points,
// UTF-8) unless its rows say otherwise throughout: what fits both ways stays as it is named.
#pragma once

#include "host/arrow/CsvInspector.h"
#include "host/arrow/TextBytes.h"
#include "host/data/ReadingOptions.h"

namespace MCHost {

// Completes the rules, which hold the delimiter that the name promises, by what `said` says and the
// text shows; sets the encoding of the bytes. The rules' notes tell what was found and not said, in
// one line. Throws HostIOError where the file cannot be read, or what is said contradicts itself.
void SniffCsv(TextBytes& bytes, const ReadingOptions& said, CsvRules& rules);

}  // namespace MCHost
