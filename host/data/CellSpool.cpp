#include "host/data/CellSpool.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "common/MissingValue.h"
#include "common/RecordBlock.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kWriteBytes = std::size_t{1} << 20;
constexpr std::size_t kMostBlockCases = 512;
constexpr std::int32_t kMissingCode = -1;

// Where anything may be placed.
constexpr std::size_t Aligned(std::size_t bytes) { return (bytes + 7) / 8 * 8; }

// The system's folder for temporary files. Where there is none, what fails in it says so.
std::string TemporaryFolder() {
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  const char* named = std::getenv("TMPDIR");
  return error && named != nullptr ? named : folder;
}

}  // namespace

CellSpool::CellSpool(const std::vector<bool>& numeric)
    : fFolder(TemporaryFolder()),
      fBlockCases(std::min(std::bit_floor(MCCommon::RecordBlock::PreferredCases(numeric.size())),
                           kMostBlockCases)) {
  for (const bool isNumber : numeric) fColumns.push_back({isNumber, 0, 0, {}, {}});
  std::string name = fFolder + "/cells.XXXXXX";
  fDescriptor = mkstemp(name.data());
  if (fDescriptor < 0) Fail("cannot hold a temporary file");
  unlink(name.c_str());
}

CellSpool::~CellSpool() {
  if (fpMapped != nullptr) munmap(const_cast<char*>(fpMapped), fnWritten);
  if (fDescriptor >= 0) close(fDescriptor);
}

void CellSpool::Begin(std::size_t nColumns) {
  EndGroup();
  const std::size_t first = fGroups.empty() ? 0 : fGroups.back().fEnd;
  fGroups.push_back({first, first + nColumns, {}});
  for (std::size_t j = first; j < fGroups.back().fEnd; ++j) {
    Column& column = fColumns[j];
    column.fGroup = fGroups.size() - 1;
    column.fPlace = j - first;
    column.fbNumeric ? column.fNumbers.resize(fBlockCases) : column.fCodes.resize(fBlockCases);
  }
}

void CellSpool::Advance(std::size_t n) {
  fnOpen += n;
  if (fnOpen == fBlockCases) StoreBlock();
}

void CellSpool::EndGroup() {
  if (fGroups.empty()) return;
  Group& group = fGroups.back();
  if (fnOpen > 0) StoreBlock();
  group.fBlocks.push_back(fnWritten + fUnwritten.size());
  for (std::size_t j = group.fFirst; j < group.fEnd; ++j) {
    std::vector<double>().swap(fColumns[j].fNumbers);
    std::vector<std::int32_t>().swap(fColumns[j].fCodes);
  }
}

void CellSpool::StoreBlock() {
  Group& group = fGroups.back();
  const std::size_t start = fUnwritten.size();
  group.fBlocks.push_back(fnWritten + start);
  fUnwritten.resize(start + (group.fEnd - group.fFirst) * sizeof(Place));
  for (std::size_t j = group.fFirst; j < group.fEnd; ++j) {
    const Column& column = fColumns[j];
    Place place = column.fbNumeric ? Store(column.fNumbers, KOVA_SystemMissing)
                                   : Store(column.fCodes, kMissingCode);
    place.fOffset -= start;
    std::memcpy(&fUnwritten[start + column.fPlace * sizeof(Place)], &place, sizeof(Place));
  }
  fnOpen = 0;
  if (fUnwritten.size() >= kWriteBytes) WriteOut();
}

// Puts the cells of the open block behind what is to be written.
template <class T>
CellSpool::Place CellSpool::Store(const std::vector<T>& cells, T missing) {
  const Place place{fUnwritten.size(), CellForm::Of(cells.data(), fnOpen, missing)};
  fUnwritten.resize(Aligned(place.fOffset + fnOpen * place.fForm.CellBytes()));
  place.fForm.Pack(cells.data(), fnOpen, missing, &fUnwritten[place.fOffset]);
  return place;
}

void CellSpool::WriteOut() {
  const char* from = fUnwritten.data();
  std::size_t left = fUnwritten.size();
  while (left > 0) {
    const ssize_t written = write(fDescriptor, from, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) Fail("cannot hold the data");
    from += written;
    left -= static_cast<std::size_t>(written);
  }
  fnWritten += fUnwritten.size();
  fUnwritten.clear();
}

void CellSpool::Show() {
  EndGroup();
  WriteOut();
  std::vector<char>().swap(fUnwritten);
  if (fnWritten == 0) return;
  void* mapped = mmap(nullptr, fnWritten, PROT_READ, MAP_SHARED, fDescriptor, 0);
  if (mapped == MAP_FAILED) Fail("cannot hold the data");
  fpMapped = static_cast<const char*>(mapped);
}

const double* CellSpool::Read(std::size_t column, std::int64_t firstCase, std::size_t n,
                              std::vector<double>& buffer) const {
  return ReadCells(column, firstCase, n, KOVA_SystemMissing, buffer);
}

const std::int32_t* CellSpool::Read(std::size_t column, std::int64_t firstCase, std::size_t n,
                                    std::vector<std::int32_t>& buffer) const {
  return ReadCells(column, firstCase, n, kMissingCode, buffer);
}

template <class T>
const T* CellSpool::ReadCells(std::size_t column, std::int64_t firstCase, std::size_t n, T missing,
                              std::vector<T>& buffer) const {
  const Column& of = fColumns[column];
  const auto at = static_cast<std::size_t>(firstCase);
  const char* const block = fpMapped + fGroups[of.fGroup].fBlocks[at / fBlockCases];
  const Place& place = reinterpret_cast<const Place*>(block)[of.fPlace];
  const char* const cells = block + place.fOffset + at % fBlockCases * place.fForm.CellBytes();
  if (place.fForm.IsPlain()) return reinterpret_cast<const T*>(cells);
  if (buffer.size() < n) buffer.resize(n);
  place.fForm.Unpack(cells, n, missing, buffer.data());
  return buffer.data();
}

void CellSpool::Forget(std::int64_t caseNumber) const {
  const std::size_t block = static_cast<std::size_t>(caseNumber) / fBlockCases;
  for (const Group& group : fGroups) {
    const std::size_t first = group.fBlocks[block] / kPageBytes * kPageBytes;
    const std::size_t end = group.fBlocks[block + 1] / kPageBytes * kPageBytes;
    if (end > first) madvise(const_cast<char*>(fpMapped) + first, end - first, MADV_DONTNEED);
  }
}

void CellSpool::Fail(const char* what) {
  const int error = errno;
  if (fDescriptor >= 0) close(fDescriptor);
  fDescriptor = -1;
  throw HostIOError(fFolder, "", std::string(what) + ": " + std::strerror(error));
}

}  // namespace MCHost
