#include "host/session/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// The names of the temporary files alive, each in a slot of its own: a signal handler may neither
// lock nor allocate. The owner of a slot keeps the text until it has cleared the slot.
std::array<std::atomic<const char*>, 64> gTemporaryFiles{};

int Register(const char* path) {
  for (std::size_t i = 0; i < gTemporaryFiles.size(); ++i) {
    const char* free = nullptr;
    if (gTemporaryFiles[i].compare_exchange_strong(free, path)) return static_cast<int>(i);
  }
  return -1;  // the file is still removed by its owner
}

void Unregister(int slot) {
  if (slot >= 0) gTemporaryFiles[static_cast<std::size_t>(slot)].store(nullptr);
}

// A name beside the target that no other file of this process has.
std::string TemporaryName(const std::string& target) {
  static std::atomic<unsigned> counter{0};
  return target + ".tmp" + std::to_string(getpid()) + "-" + std::to_string(counter++);
}

std::string BehindLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real != nullptr ? real.get() : path;
}

}  // namespace

void WriteWhole(const std::string& target,
                const std::function<std::string(const std::string& path)>& write) {
  OutputFile file(target);
  const std::string trouble = write(file.WritePath());
  if (!trouble.empty()) throw HostIOError(target, "", trouble);
  file.Commit();
}

void RemoveTemporaryFiles() noexcept {
  for (auto& slot : gTemporaryFiles) {
    const char* path = slot.exchange(nullptr);
    if (path != nullptr) unlink(path);
  }
}

OutputFile::OutputFile(std::string target)
    : fTarget(std::move(target)), fFinal(BehindLinks(fTarget)) {
  struct stat old;
  const bool exists = stat(fFinal.c_str(), &old) == 0;
  if (exists && S_ISDIR(old.st_mode)) Fail(EISDIR);
  if (exists && !S_ISREG(old.st_mode)) {
    OpenDirectly();
    return;
  }
  OpenTemporary();
  // A file system without permissions is no reason not to write.
  if (exists) (void)!fchmod(fDescriptor, old.st_mode & 07777);
}

void OutputFile::OpenDirectly() {
  fbDirect = true;
  fDescriptor = open(fFinal.c_str(), O_WRONLY | O_CLOEXEC);
  if (fDescriptor < 0) Fail(errno);
}

void OutputFile::OpenTemporary() {
  std::string name = TemporaryName(fFinal);
  do {
    fDescriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fDescriptor < 0 && errno == EEXIST) name = TemporaryName(fFinal);
  } while (fDescriptor < 0 && errno == EEXIST);
  if (fDescriptor < 0) Fail(errno);
  fTemporary = std::move(name);
  fSlot = Register(fTemporary.c_str());
}

OutputFile::~OutputFile() {
  if (fDescriptor >= 0) close(fDescriptor);
  if (!fTemporary.empty()) unlink(fTemporary.c_str());
  Unregister(fSlot);
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
  if (close(descriptor) != 0) Fail(errno);
  if (fbDirect) return;
  if (std::rename(fTemporary.c_str(), fFinal.c_str()) != 0) Fail(errno);
  Unregister(std::exchange(fSlot, -1));
  fTemporary.clear();
}

void OutputFile::Fail(int error) {
  throw HostIOError(fTarget, "", std::string("cannot be written: ") + std::strerror(error));
}

}  // namespace MCHost
