// Makes the columns of a query those that a table can hold, where the database knows no types or
// none that Arrow has.
#pragma once

#include <arrow/type_fwd.h>

#include <memory>
#include <string>
#include <vector>

#include "host/arrow/DatabaseLink.h"

namespace MCHost {

class DatabaseTypes {
 public:
  // Asks the database about the columns of the query, and of their cells where these have types of
  // their own: a column with any text becomes one of texts then, one with any number that is not
  // whole one of such numbers. Exact numbers that a driver gives as texts become doubles. `source`
  // names the data in messages. Throws HostIOError.
  DatabaseTypes(DatabaseLink& link, const DatabaseKind& kind, const std::string& query,
                std::string source);

  // What the query gives, in these types.
  std::shared_ptr<arrow::RecordBatchReader> Run(DatabaseLink& link) const;

  // What the user should know of the columns, one sentence each.
  const std::vector<std::string>& Notes() const { return fNotes; }

 private:
  struct CellCounts;

  void SettleCells(DatabaseLink& link, const arrow::Schema& schema);
  void Settle(const std::string& name, const CellCounts& cells);
  void SettleExactNumbers(const arrow::Schema& schema);

  std::string fSource;
  std::string fQuery;
  std::string fColumns;  // of the query around it; empty for none
  std::string fSample;   // a case of the right types to be given first, and left out
  std::vector<std::string> fNotes;
};

}  // namespace MCHost
