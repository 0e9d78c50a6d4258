// Columns of a table, to be handed out as an Arrow stream: numbers and texts as they stand, missing
// cells as null. A field has its variable's label as metadata "label".
//
// Shares the table and scans it anew; a scan sees what is in the table when it comes by.
#pragma once

#include <memory>
#include <vector>

#include "host/data/ArrowStreamWriter.h"
#include "host/data/ITable.h"

namespace MCHost {

class TableBatches : public IArrowBatches {
 public:
  // Columns in the order given, each at most once. Throws HostIOError.
  TableBatches(std::shared_ptr<ITable> table, const std::vector<int>& columns);

  const std::vector<ArrowField>& Fields() const override { return fFields; }
  std::size_t Next(std::vector<ArrowCells>& columns) override;

 private:
  std::shared_ptr<ITable> fpTable;
  std::vector<ArrowField> fFields;
  std::unique_ptr<ITableScan> fpScan;
};

}  // namespace MCHost
