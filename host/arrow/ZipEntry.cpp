#include "host/arrow/ZipEntry.h"

#include <minizip/unzip.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <string_view>

#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr int kIgnoreCase = 2;

}  // namespace

struct ZipEntry::Archive {
  explicit Archive(const std::string& path) : fFile(unzOpen64(path.c_str())) {
    if (fFile == nullptr) throw HostIOError(path, "", "the file is not a sound zip archive");
  }
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;
  ~Archive() { unzClose(fFile); }

  bool Find(const std::string& name) {
    return unzLocateFile(fFile, name.c_str(), kIgnoreCase) == UNZ_OK;
  }

  unzFile fFile;
};

bool ZipEntry::IsZip(const std::string& path) {
  std::array<char, 4> start{};
  std::ifstream file(path, std::ios::binary);
  file.read(start.data(), start.size());
  return std::string_view(start.data(), start.size()) == "PK\x03\x04";
}

bool ZipEntry::IsThere(const std::string& path, const std::string& name) {
  return Archive(path).Find(name);
}

ZipEntry::ZipEntry(const std::string& path, const std::string& name)
    : fPath(path), fpArchive(std::make_unique<Archive>(path)) {
  if (!fpArchive->Find(name)) throw HostIOError(path, "", "\"" + name + "\" is not in the archive");
  if (unzOpenCurrentFile(fpArchive->fFile) != UNZ_OK) Fail();
}

ZipEntry::~ZipEntry() = default;

std::size_t ZipEntry::Read(void* bytes, std::size_t most) {
  if (fbEnded) return 0;
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  const int n =
      unzReadCurrentFile(fpArchive->fFile, bytes, static_cast<unsigned>(std::min(most, kMost)));
  if (n < 0) Fail();
  fbEnded = n == 0;
  // Closing holds the check sum against all that was read.
  if (fbEnded && unzCloseCurrentFile(fpArchive->fFile) != UNZ_OK) Fail();
  return static_cast<std::size_t>(n);
}

void ZipEntry::Fail() const { throw HostIOError(fPath, "", "the archive is damaged or encrypted"); }

}  // namespace MCHost
