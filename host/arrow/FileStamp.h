// What tells whether a file is still the one that was looked at.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <string>

namespace MCHost {

class FileStamp {
 public:
  FileStamp() = default;  // of no file

  // A file that is not there, or not a plain one, has none, and never changes.
  explicit FileStamp(const std::string& path);

  // Throws HostIOError where the path leads to another file by now, or to another content.
  void Check(const std::string& path) const;

 private:
  bool operator==(const FileStamp& other) const;

  bool fbFile = false;
  dev_t fDevice = 0;
  ino_t fNumber = 0;
  off_t fSize = 0;
  timespec fWritten{};
};

}  // namespace MCHost
