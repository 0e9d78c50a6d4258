// What callers say of a table besides its data, and a table made ready by it.
#pragma once

#include <memory>
#include <string>

#include "host/data/DataTable.h"
#include "host/data/ReadingOptions.h"
#include "operations/TableOptions.h"
#include "operations/c/predselect.h"

namespace PredSelectC {

// Throws Misuse, RequestError, MCHost::HostIOError for a schema that cannot be read.
PredSelect::TableOptions WishesOf(const predselect_table_options& given);

// Throws Misuse, RequestError for an option that there is not, or that does not take its word.
MCHost::ReadingOptions ReadingOf(const predselect_table_options& given);

// The handle of a table that was read; its wishes are put into its dictionary. Throws as
// PredSelect::PrepareTable does.
predselect_table* MakeTable(std::shared_ptr<MCHost::DataTable> table, std::string name,
                            const PredSelect::TableOptions& wishes);

}  // namespace PredSelectC
