// Batches put by in a temporary file, for columns that cannot be read side by side with others in
// little memory.
#pragma once

#include <arrow/type_fwd.h>

#include <cstdint>
#include <memory>
#include <string>

namespace MCHost {

// Reads a stream to its end and gives the same cases in batches of at most so many. The file is in
// the system's folder for temporary files, without a name from the start, and goes with the reader.
// `source` names the data in messages. Throws HostIOError.
std::shared_ptr<arrow::RecordBatchReader> SpoolBatches(arrow::RecordBatchReader& batches,
                                                       std::int64_t mostCases,
                                                       const std::string& source);

}  // namespace MCHost
