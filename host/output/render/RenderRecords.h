// Records as lines of text.
#pragma once

#include <string>

#include "host/data/FileFormat.h"

namespace MCHost {

struct FlatRecords;

// CSV and TSV quote as RFC 4180 says, and leave missing cells empty; JSON Lines has null there.
// Markdown is for people: six digits of a number. REQUIRES: one of these four.
std::string RenderRecords(const FlatRecords& records, FileFormat format);

}  // namespace MCHost
