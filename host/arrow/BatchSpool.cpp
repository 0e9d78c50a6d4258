#include "host/arrow/BatchSpool.h"

#include <arrow/io/file.h>
#include <arrow/ipc/reader.h>
#include <arrow/ipc/writer.h>
#include <arrow/record_batch.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// A descriptor that whoever opens it by number takes over.
int OpenNameless(const std::string& folder) {
  std::string name = folder + "/cells.XXXXXX";
  const int descriptor = mkstemp(name.data());
  if (descriptor < 0) {
    throw HostIOError(folder, "",
                      std::string("cannot hold a temporary file: ") + std::strerror(errno));
  }
  unlink(name.c_str());
  return descriptor;
}

}  // namespace

std::shared_ptr<arrow::RecordBatchReader> SpoolBatches(arrow::RecordBatchReader& batches,
                                                       std::int64_t mostCases,
                                                       const std::string& source) {
  const std::string folder = std::filesystem::temp_directory_path().string();
  const int descriptor = OpenNameless(folder);
  const auto input = Value(arrow::io::ReadableFile::Open(descriptor), folder);
  const auto output = Value(arrow::io::FileOutputStream::Open(dup(descriptor)), folder);
  const auto writer = Value(arrow::ipc::MakeStreamWriter(output, batches.schema()), folder);
  while (const auto batch = Value(batches.Next(), source)) {
    for (std::int64_t at = 0; at < batch->num_rows(); at += mostCases) {
      Check(writer->WriteRecordBatch(*batch->Slice(at, mostCases)), folder);
    }
  }
  Check(writer->Close(), folder);
  Check(output->Close(), folder);
  Check(input->Seek(0), folder);
  return Value(arrow::ipc::RecordBatchStreamReader::Open(input), folder);
}

}  // namespace MCHost
