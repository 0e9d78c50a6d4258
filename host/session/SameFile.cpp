#include "host/session/SameFile.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace MCHost {

namespace {

bool IsRegularOrNew(const std::string& path) {
  if (path.empty() || path == "-") return false;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return fs::is_regular_file(status) || status.type() == fs::file_type::not_found;
}

}  // namespace

bool IsSameFile(const std::string& left, const std::string& right) {
  if (!IsRegularOrNew(left) || !IsRegularOrNew(right)) return false;
  std::error_code error;
  if (fs::equivalent(left, right, error)) return true;
  // A relative path of which nothing is there yet would stay relative.
  const fs::path real = fs::weakly_canonical(fs::absolute(left), error);
  return !error && real == fs::weakly_canonical(fs::absolute(right), error) && !error;
}

}  // namespace MCHost
