// Any table of the output as records with names that stay: what --format csv gives of it.
//
//   - A record is a row of the page, layer by layer (TableRecords.h).
//   - Where the columns are values of the data, as in a classification table, a record is a cell:
//     its observed and its predicted category, say, and "cases". What sums up others is left out.
//   - Where the cells are lists of names, a record is a name: "predictor".
//   - A list of numbers is a column for each of them: "df1", "df2".
// A column is called by its keys in small letters, joined with "_": "test_value", "log10_p"; the
// heading above a row's own is "<name>_group", or "<name>_group_1", ... where there are several.
#pragma once

#include "host/output/FlatRecords.h"

namespace MCHost {

struct OutputTable;

FlatRecords LayFlat(const OutputTable& table);

}  // namespace MCHost
