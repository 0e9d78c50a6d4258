// Any bytes as a file of rows or columns that is no CSV: JSON Lines and JSON, workbooks, Arrow with
// whatever its metadata and offsets say, Parquet. A refusal that names the file and the reason, or
// a table, the same in memory and streamed.
//
// The first byte chooses the format.
#include <sys/mman.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "fuzz/TableContents.h"
#include "host/arrow/DataFile.h"
#include "host/session/HostIOError.h"

namespace {

using MCHost::HostIOError;
using MCHost::TableStorage;
using PredSelectFuzz::Require;

constexpr std::array kFormats = {"jsonl", "json", "xlsx", "ods", "arrow", "parquet"};

const std::string& FilePath() {
  static const std::string path =
      "/proc/self/fd/" + std::to_string(memfd_create("predselect-rows", 0));
  return path;
}

// Empty for a refusal.
std::string Read(const MCHost::DataFileOptions& options, TableStorage storage) {
  try {
    const std::unique_ptr<MCHost::DataTable> table =
        MCHost::OpenDataFile(FilePath(), options, storage);
    return PredSelectFuzz::ContentsOf(*table);
  } catch (const HostIOError& error) {
    Require(!error.File().empty() && !error.Reason().empty(), "an error names file and reason",
            error.what());
    return "";
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  MCHost::DataFileOptions options;
  const char* format = kFormats[data[0] % kFormats.size()];
  Require(MCHost::SetReadingOption(options.fReading, "input-format", format).empty(), "is a format",
          format);
  std::ofstream(FilePath(), std::ios::binary)
      .write(reinterpret_cast<const char*>(data) + 1, static_cast<std::streamsize>(size - 1));
  const std::string contents = Read(options, TableStorage::kMemory);
  // Streaming may come upon what is wrong in the midst of a scan, so it says so later.
  if (!contents.empty()) {
    const std::string streamed = Read(options, TableStorage::kStreamed);
    Require(streamed == contents, "streaming changes nothing", contents + "\n" + streamed);
  }
  return 0;
}
