#include "host/data/CellSpool.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::size_t kPageBytes = 4096;

std::size_t WholePages(std::size_t bytes) {
  return (bytes + kPageBytes - 1) / kPageBytes * kPageBytes;
}

// The system's folder for temporary files. Where there is none, what fails in it says so.
std::string TemporaryFolder() {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  const char* named = std::getenv("TMPDIR");
  return error && named != nullptr ? named : folder;
}

}  // namespace

CellSpool::CellSpool(const std::vector<bool>& numeric) : fFolder(TemporaryFolder()) {
  for (const bool isNumber : numeric) {
    fColumns.push_back({isNumber ? sizeof(double) : sizeof(std::int32_t), fBlockBytes});
    fBlockBytes += fColumns.back().fCellBytes * kBlockCases;
  }
  fBlockBytes = WholePages(fBlockBytes);
  std::string name = fFolder + "/cells.XXXXXX";
  fDescriptor = mkstemp(name.data());
  if (fDescriptor < 0) Fail("cannot hold a temporary file");
  unlink(name.c_str());
}

void CellSpool::Show(std::int64_t nCases) {
  const std::size_t blocks = (static_cast<std::size_t>(nCases) + kBlockCases - 1) / kBlockCases;
  fBytes = blocks * fBlockBytes;
  if (fBytes == 0) return;
  if (ftruncate(fDescriptor, static_cast<off_t>(fBytes)) != 0) Fail("cannot hold the data");
  void* mapped = mmap(nullptr, fBytes, PROT_READ, MAP_SHARED, fDescriptor, 0);
  if (mapped == MAP_FAILED) Fail("cannot hold the data");
  fpMapped = static_cast<const char*>(mapped);
}

CellSpool::~CellSpool() {
  if (fpMapped != nullptr) munmap(const_cast<char*>(fpMapped), fBytes);
  if (fDescriptor >= 0) close(fDescriptor);
}

std::size_t CellSpool::OffsetOf(std::size_t column, std::int64_t firstCase) const {
  const auto at = static_cast<std::size_t>(firstCase);
  return at / kBlockCases * fBlockBytes + fColumns[column].fOffset +
         at % kBlockCases * fColumns[column].fCellBytes;
}

void CellSpool::Write(std::size_t column, std::int64_t firstCase, const void* cells,
                      std::size_t n) {
  const char* from = static_cast<const char*>(cells);
  std::size_t left = n * fColumns[column].fCellBytes;
  auto offset = static_cast<off_t>(OffsetOf(column, firstCase));
  while (left > 0) {
    const ssize_t written = pwrite(fDescriptor, from, left, offset);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) Fail("cannot hold the data");
    from += written;
    offset += written;
    left -= static_cast<std::size_t>(written);
  }
}

const void* CellSpool::Cells(std::size_t column, std::int64_t firstCase) const {
  return fpMapped + OffsetOf(column, firstCase);
}

void CellSpool::Forget(std::int64_t caseNumber) const {
  const std::size_t start = static_cast<std::size_t>(caseNumber) / kBlockCases * fBlockBytes;
  madvise(const_cast<char*>(fpMapped) + start, fBlockBytes, MADV_DONTNEED);
}

void CellSpool::Fail(const char* what) {
  const int error = errno;
  if (fDescriptor >= 0) close(fDescriptor);
  if (fpMapped != nullptr) munmap(const_cast<char*>(fpMapped), fBytes);
  fDescriptor = -1;
  fpMapped = nullptr;
  throw HostIOError(fFolder, "", std::string(what) + ": " + std::strerror(error));
}

}  // namespace MCHost
