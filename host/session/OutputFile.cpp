#include "host/session/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "host/session/HostIOError.h"
#include "host/session/OutputGroup.h"
#include "host/session/TemporaryFile.h"

namespace MCHost {

namespace {

enum class Kind { kNone, kFile, kFolder, kOther, kUnknown };

// What stands at a path; errno says why that is unknown.
Kind KindOf(const std::string& path, mode_t& permissions) {
  struct stat found;
  if (stat(path.c_str(), &found) != 0) {
    return errno == ENOENT && !path.empty() ? Kind::kNone : Kind::kUnknown;
  }
  permissions = found.st_mode & 07777;
  if (S_ISDIR(found.st_mode)) return Kind::kFolder;
  return S_ISREG(found.st_mode) ? Kind::kFile : Kind::kOther;
}

std::string BehindLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real != nullptr ? real.get() : path;
}

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

void WriteWhole(const std::string& target,
                const std::function<std::string(const std::string& path)>& write) {
  OutputFile file(target);
  const std::string trouble = write(file.WritePath());
  if (!trouble.empty()) throw HostIOError(target, "", trouble);
  file.Commit();
}

OutputFile::OutputFile(std::string target)
    : fTarget(std::move(target)), fFinal(BehindLinks(fTarget)) {
  if (fTarget == kStandardOutput) {
    fTarget = "standard output";
    fDescriptor = dup(STDOUT_FILENO);
    if (fDescriptor < 0) Fail(errno);
    return;
  }
  mode_t permissions = 0;
  const Kind kind = KindOf(fFinal, permissions);
  if (kind == Kind::kUnknown) Fail(errno);
  if (kind == Kind::kFolder) Fail(EISDIR);
  if (kind == Kind::kOther) {
    fDescriptor = open(fFinal.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    fpTemporary = std::make_unique<TemporaryFile>(FolderOf(fFinal));
    fDescriptor = fpTemporary->Descriptor();
  }
  if (fDescriptor < 0) Fail(errno);
}

OutputFile::~OutputFile() {
  if (fpTemporary == nullptr && fDescriptor >= 0) close(fDescriptor);
}

void OutputFile::Check(const std::string& target) {
  if (target == kStandardOutput) return;
  mode_t permissions = 0;
  if (KindOf(target, permissions) != Kind::kOther) {
    const OutputFile trial(target);
  } else if (access(target.c_str(), W_OK) != 0) {  // opening a pipe would be its reader's end
    throw HostIOError(target, "", std::string("cannot be written: ") + std::strerror(errno));
  }
}

std::string OutputFile::WritePath() const {
  return fpTemporary == nullptr ? fTarget : fpTemporary->Path();
}

void OutputFile::Write(const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(fDescriptor, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) Fail(written < 0 ? errno : ENOSPC);
    data += written;
    size -= static_cast<std::size_t>(written);
  }
}

void OutputFile::Commit() {
  const int descriptor = std::exchange(fDescriptor, -1);
  if (fpTemporary == nullptr) {
    if (close(descriptor) != 0 && errno != EINTR) Fail(errno);
    return;
  }
  mode_t permissions = 0;
  // Not earlier: a file that may only be read could not be opened for writing by its name.
  if (KindOf(fFinal, permissions) == Kind::kFile) fpTemporary->SetPermissions(permissions);
  FinishedFile whole{std::move(fpTemporary), fFinal, fTarget};
  if (OutputGroup* group = OutputGroup::Current()) return group->Take(std::move(whole));
  std::vector<FinishedFile> alone;
  alone.push_back(std::move(whole));
  PlaceFiles(std::move(alone));
}

void OutputFile::Fail(int error) const {
  throw HostIOError(fTarget, "", std::string("cannot be written: ") + std::strerror(error));
}

void CheckOutputFolder(const std::string& folder) {
  std::filesystem::path there = folder;
  std::error_code error;
  while (!there.empty() && there.has_relative_path() && !std::filesystem::exists(there, error)) {
    there = there.parent_path();
  }
  const TemporaryFile trial(there.empty() ? "." : there.string());
  if (trial.Descriptor() >= 0) return;
  throw HostIOError(folder, "", std::string("cannot be written into: ") + std::strerror(errno));
}

}  // namespace MCHost
