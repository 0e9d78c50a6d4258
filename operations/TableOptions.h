// What is said of a table besides its data, and a table made ready for the operations.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/data/KOVA_Variable.h"
#include "host/data/ReadingOptions.h"
#include "host/data/TableSchema.h"
#include "host/data/WholeTable.h"

namespace MCHost {
class DataTable;
}

namespace PredSelect {

struct TableOptions {
  std::optional<MCHost::TableSchema> fSchema;
  // Variables by name, with their level; these overrule the schema, a later one an earlier one.
  std::vector<std::pair<std::string, KOVA_Variable::MeasurementLevel>> fLevels;
  // User-missing values, besides those of the schema: numbers and ranges "low..high" of numeric
  // variables, texts of others. A text is no value of a numeric variable, so it changes nothing.
  std::vector<MCHost::MissingCodes> fMissing;
  std::string fWeight;  // name of the frequency weight variable, empty for none
  // The whole of which the table is a part. Its dictionary is then the table's, and nothing else
  // must be said; null for a table that stands for itself.
  std::shared_ptr<const MCHost::WholeTable> fpWhole{};
};

// Puts the schema, the levels and the weight into the dictionary and settles the levels that nobody
// gave. A table is prepared once, before its first operation.
// Throws MCHost::HostIOError for a schema that does not fit and for data that cannot be read,
// RequestError (level, weight, missing) for a variable that is not there, a text as scale or as a
// weight, a second range, and (using) for a part that is not of its whole.
void PrepareTable(MCHost::DataTable& table, const TableOptions& options);

// The columns of the data that are to tell its cases apart where predictions are saved without the
// others. Throws RequestError (id) for a variable that is not there, or comes twice.
std::vector<int> KeyColumns(MCHost::DataTable& table, const std::vector<std::string>& names);

}  // namespace PredSelect
