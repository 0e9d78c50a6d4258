// A table held in memory, read from an Arrow C stream or built column by column.
//
// Numbers are kept in as few bytes as hold them exactly, and strings as codes, likewise; scans show
// doubles and codes of four bytes.
// Every missing number is KOVA_SystemMissing, also where the data had NaN or an infinity.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/data/DataTable.h"

namespace MCHost {

class MemoryTable final : public DataTable {
 public:
  // An empty table, to be built with AddNumbers and AddStrings. Scans give batches of at most
  // `maxBatchCases`, a divisor of RecordBlock::kMaxCases.
  explicit MemoryTable(std::size_t maxBatchCases = MCCommon::RecordBlock::kMaxCases);

  // Reads the whole stream, taking it over. `source` names the data in messages.
  // Throws HostIOError.
  explicit MemoryTable(ArrowArrayStream* stream, const std::string& source = "data");

  // Thrown where the cells take more than they may.
  struct Outgrown {};

  // Reads a source whole, and keeps its notes. Throws HostIOError, and Outgrown as soon as the
  // cells of a source take more than `maxBytes`.
  explicit MemoryTable(IArrowSource& source,
                       std::size_t maxBytes = std::numeric_limits<std::size_t>::max());

  // The same, and keeps the source for whoever wants the cells as they were.
  explicit MemoryTable(std::unique_ptr<IArrowSource> source);

  void KeepSource(std::unique_ptr<IArrowSource> source) { fpSource = std::move(source); }

  // Appends a column of the table's own; returns its place. NaN and infinities are missing, as is
  // a string that is not there.
  // REQUIRES: all columns have the same length; no variable was added yet; the name is new.
  int AddNumbers(const std::string& name, const std::vector<double>& values);
  int AddStrings(const std::string& name, const std::vector<std::optional<std::string>>& values);

  std::unique_ptr<ITableScan> Scan(const std::vector<int>& columns) override;

 private:
  void ReadColumns(IArrowSource& source);
  // Fills the columns from `firstColumn` on.
  void Load(ArrowStreamReader& reader, int firstColumn);
  void LoadBatch(ArrowStreamReader& reader, int firstColumn, std::size_t maxBytes);
  void LoadColumns(IArrowSource& source, int first, int count);
  int AddOwnColumn(const std::string& name, int type, std::size_t nCases);

  std::size_t fMaxBytes = std::numeric_limits<std::size_t>::max();
};

}  // namespace MCHost
