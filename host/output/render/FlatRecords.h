// A flat table of the output as records for programs: one a row, its label first, then every column
// at full precision, the ones that a page has no room for as well.
//
// A field is called by the keys of its column in small letters, joined with "_": "test_value",
// "log10_p". Texts are what programs know them by: keys of the string table, names and values.
#pragma once

#include <memory>
#include <string>

namespace MCHost {

class ITable;
class MemoryTable;
struct OutputTable;

enum class RecordsForm { kCsv, kTsv, kJsonLines, kMarkdown };

std::unique_ptr<MemoryTable> FlatRecords(const OutputTable& table);

// CSV and TSV quote as RFC 4180 says, and leave missing cells empty; JSON Lines has null there.
// Markdown is for people: six digits of a number.
std::string RenderRecords(ITable& records, RecordsForm form);

}  // namespace MCHost
