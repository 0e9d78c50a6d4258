#include "operations/StateKey.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "host/session/HostIOError.h"

namespace PredSelect {

namespace {

constexpr std::size_t kLeast = 16;
constexpr std::size_t kMost = 4096;

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw MCHost::HostIOError(path, "", "cannot be used as a key: " + why);
}

// A pipe has no permissions that mean anything.
void CheckAccess(const std::string& path) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0) Refuse(path, std::strerror(errno));
  if (S_ISDIR(found.st_mode)) Refuse(path, std::strerror(EISDIR));
  if (S_ISREG(found.st_mode) && (found.st_mode & S_IRWXO) != 0) {
    Refuse(path, "everyone on this machine may use it; chmod o= makes it a secret");
  }
}

}  // namespace

std::string ReadStateKey(const std::string& path) {
  if (path.empty()) return "";
  CheckAccess(path);
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string key(kMost + 1, '\0');
  file.read(key.data(), static_cast<std::streamsize>(key.size()));
  if (!file.is_open() || file.bad()) Refuse(path, std::strerror(errno));
  key.resize(static_cast<std::size_t>(file.gcount()));
  if (key.size() > kMost) Refuse(path, "it is longer than 4096 bytes");
  while (!key.empty() && (key.back() == '\n' || key.back() == '\r')) key.pop_back();
  if (key.empty()) Refuse(path, "it is empty");
  if (key.size() < kLeast) {
    Refuse(path, "it holds " + std::to_string(key.size()) + " bytes; a key has at least 16");
  }
  return key;
}

}  // namespace PredSelect
