#include "host/arrow/FileStamp.h"

#include <sys/stat.h>

#include "host/session/HostIOError.h"

namespace MCHost {

FileStamp::FileStamp(const std::string& path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return;
  fbFile = true;
  fDevice = found.st_dev;
  fNumber = found.st_ino;
  fSize = found.st_size;
  fWritten = found.st_mtim;
}

bool FileStamp::operator==(const FileStamp& other) const {
  return fDevice == other.fDevice && fNumber == other.fNumber && fSize == other.fSize &&
         fWritten.tv_sec == other.fWritten.tv_sec && fWritten.tv_nsec == other.fWritten.tv_nsec;
}

void FileStamp::Check(const std::string& path) const {
  const FileStamp now(path);
  if (!fbFile || !now.fbFile || now == *this) return;
  throw HostIOError(path, "", "the data changed while they were read");
}

}  // namespace MCHost
