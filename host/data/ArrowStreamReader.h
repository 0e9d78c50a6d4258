// Reads an Arrow C stream batch by batch through its columns.
//
// Owns the stream and the batch it is at. Refuses a stream that is not a stream of named columns,
// and columns without a name, with the same one, or with one that is not UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/data/ArrowCDataInterface.h"
#include "host/data/ArrowColumn.h"

namespace MCHost {

class ArrowStreamReader {
 public:
  // Takes the stream over, and leaves `stream` released. `source` names the data in messages.
  // Throws HostIOError.
  ArrowStreamReader(ArrowArrayStream* stream, std::string source);
  ArrowStreamReader(const ArrowStreamReader&) = delete;
  ArrowStreamReader& operator=(const ArrowStreamReader&) = delete;
  ~ArrowStreamReader();

  int ColumnCount() const { return static_cast<int>(fColumns.size()); }
  ArrowColumn& Column(int column) { return fColumns[static_cast<std::size_t>(column)]; }

  // Goes to the next batch that has cases and attaches the columns to it; false at the end.
  // Throws HostIOError.
  bool NextBatch();

  // Cases of the current batch. REQUIRES: NextBatch() was true.
  std::int64_t BatchCases() const { return fBatch.length; }

 private:
  void ReadSchema();
  void AttachBatch();
  void ReleaseBatch();
  [[noreturn]] void Fail(int code);

  ArrowArrayStream fStream;
  ArrowArray fBatch{};
  std::string fSource;
  std::vector<ArrowColumn> fColumns;
};

}  // namespace MCHost
