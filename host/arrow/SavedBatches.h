// The columns of a table as they are saved: those that the data brought with the types and values
// that they have there, then the variables that were added, as numbers and texts.
//
// What the table does not keep in full is read from its source again, so no more of it is held than
// a batch. Own columns of a table without a source are what the table has of them.
#pragma once

#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace MCHost {

class DataTable;

// The variables that were added. Throws HostIOError.
std::shared_ptr<arrow::RecordBatchReader> AddedColumns(DataTable& table);

class SavedBatches {
 public:
  // `own`: columns of the data, each once, in the order in which they are saved. A variable's label
  // goes with its column under the key "label". Throws HostIOError.
  SavedBatches(DataTable& table, const std::vector<int>& own);
  ~SavedBatches();

  const std::shared_ptr<arrow::Schema>& Schema() const { return fpSchema; }

  // The next cases, null behind the last. Throws HostIOError, also when the data are no longer what
  // they were.
  std::shared_ptr<arrow::RecordBatch> Next();

 private:
  class Reader;

  void AddReader(std::shared_ptr<arrow::RecordBatchReader> batches, const std::string& name);
  std::vector<int> OpenOwn(DataTable& table, std::vector<int> own);
  void OpenSource(const DataTable& table, const std::vector<int>& columns);
  void SetSchema(const DataTable& table, const std::vector<int>& own);

  std::vector<std::unique_ptr<Reader>> fReaders;  // side by side
  bool fbSetsPace = false;                        // the first one gives batches as they are saved
  std::vector<std::size_t> fOrder;                // of the readers' columns in what is saved
  std::vector<std::size_t> fIntegers;             // of them, those that are saved as integers
  std::shared_ptr<arrow::Schema> fpSchema;
  std::int64_t fMostCases = 0;  // in a batch
  std::int64_t fCasesLeft;
};

}  // namespace MCHost
