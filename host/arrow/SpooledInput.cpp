#include "host/arrow/SpooledInput.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "host/session/HostIOError.h"

namespace MCHost {

SpooledInput::SpooledInput(int descriptor, std::string name, std::size_t mostHeld)
    : fName(std::move(name)) {
  std::vector<char> piece(std::size_t{1} << 18);
  while (true) {
    const ssize_t n = read(descriptor, piece.data(), piece.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) Fail(fName, "cannot be read");
    if (n == 0) break;
    const auto size = static_cast<std::size_t>(n);
    if (fFile < 0 && fText.size() + size > mostHeld) OpenFile();
    fFile < 0 ? void(fText.append(piece.data(), size)) : Write(piece.data(), size);
  }
  if (fFile < 0 && mostHeld == 0) OpenFile();
}

// The file stays open, since it has no other name than that of its descriptor.
void SpooledInput::OpenFile() {
  std::error_code error;
  fFolder = std::filesystem::temp_directory_path(error).string();
  std::string name = fFolder + "/input.XXXXXX";
  fFile = mkstemp(name.data());
  if (fFile < 0) Fail(fFolder, "cannot hold a temporary file");
  unlink(name.c_str());
  fPath = kPlace + std::to_string(fFile);
  Write(fText.data(), fText.size());
  std::string().swap(fText);
}

void SpooledInput::Write(const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t n = write(fFile, bytes, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) Fail(fFolder, "cannot hold the data");
    bytes += n;
    size -= static_cast<std::size_t>(n);
  }
}

void SpooledInput::Fail(const std::string& file, const char* what) const {
  throw HostIOError(file, "", std::string(what) + ": " + std::strerror(errno));
}

}  // namespace MCHost
