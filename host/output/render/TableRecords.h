// A pivot table as records: one a row of the page (layer by layer), for programs that want to sort,
// join and plot.
//
// Columns, in order:
//   - of each row dimension, then of each layer dimension, text: "<name>: Group 1", ... for the
//     headings of nested categories from the outermost, nothing where a category has fewer; then
//     "<name>", the category itself;
//   - of each column, its keys joined with ": " ("Value" where there are none): numbers at full
//     precision, or text in a column that holds any.
// Texts are what programs know them by: keys of the string table, names and values. A name that is
// taken already gets " 2", " 3", ... behind it. Footnotes and captions are left to the JSON
// document.
#pragma once

#include "host/output/FlatRecords.h"

namespace MCHost {

struct OutputTable;

FlatRecords TableRecords(const OutputTable& table);

}  // namespace MCHost
