// The bytes of one file in a zip archive, unpacked as they are read.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace MCHost {

class ZipEntry {
 public:
  // Whether the file begins as an archive does.
  static bool IsZip(const std::string& path);

  // Whether there is such a file in the archive. Throws HostIOError for a broken one.
  static bool IsThere(const std::string& path, const std::string& name);

  // Throws HostIOError where it is not there.
  ZipEntry(const std::string& path, const std::string& name);
  ~ZipEntry();

  // The next bytes, at most so many; 0 at the end. Throws HostIOError for damage.
  std::size_t Read(void* bytes, std::size_t most);

 private:
  struct Archive;

  [[noreturn]] void Fail() const;

  std::string fPath;
  std::unique_ptr<Archive> fpArchive;
  bool fbEnded = false;
};

}  // namespace MCHost
