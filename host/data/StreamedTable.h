// A table whose cells stay where they are: every scan reads them again from the source.
//
// Memory does not grow with the number of cases, with three exceptions: the distinct strings of a
// string column are kept with the table (so that codes mean the same in every scan), so a column of
// unique strings costs as much as its text; the cells of added variables are kept, 8 bytes a number
// and 4 a string; and the source keeps what its format needs for the batch it is at. A source whose
// columns cannot all be read side by side in little memory (a wide columnar file) is first turned
// into a temporary file of cells, group of columns by group of columns, and scanned there; so is
// one that is to be read only once. Scans give the same values, codes and batches as those of a
// MemoryTable of the same data.
#pragma once

#include <memory>
#include <vector>

#include "host/data/CellSpool.h"
#include "host/data/DataTable.h"

namespace MCHost {

class StreamedTable final : public DataTable {
 public:
  // Reads the columns' types, and the string columns once: their strings, widths and the number of
  // cases. Scans give batches of at most `maxBatchCases`, a divisor of RecordBlock::kMaxCases.
  // Throws HostIOError.
  explicit StreamedTable(std::unique_ptr<IArrowSource> source,
                         std::size_t maxBatchCases = MCCommon::RecordBlock::kMaxCases);

  // Scanning throws HostIOError also when the source no longer has the columns or the number of
  // cases that it had.
  std::unique_ptr<ITableScan> Scan(const std::vector<int>& columns) override;

  bool KeepsCells() const override { return false; }

 private:
  class StreamedScan;

  ColumnView View(int column, std::int64_t firstCase, std::size_t n,
                  ViewBuffer& buffer) const override;
  void LeaveBatch(const TableBatch& batch) const override;

  void ReadSource();
  void ReadStrings();
  void CountCases();
  void Spool();
  std::int64_t SpoolColumns(const std::vector<int>& columns);
  void SpoolBatch(ArrowStreamReader& reader, const std::vector<int>& columns);
  [[noreturn]] void Changed() const;
  std::unique_ptr<ArrowStreamReader> Open(const std::vector<int>& columns);

  std::unique_ptr<CellSpool> fpSpool;  // null unless the source needs it
};

}  // namespace MCHost
