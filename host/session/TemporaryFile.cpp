#include "host/session/TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>

#include "host/session/Unfinished.h"

namespace MCHost {

namespace {

constexpr char kNameStart[] = ".predselect-";
constexpr char kNameEnd[] = ".tmp";
constexpr mode_t kPermissions = 0666;  // less what the user's mask takes away

// A name that no other file of this process has.
std::string NewName(const std::string& folder) {
  static std::atomic<unsigned> counter{0};
  return folder + "/" + kNameStart + std::to_string(getpid()) + "-" + std::to_string(counter++) +
         kNameEnd;
}

bool Lock(int descriptor) { return flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

// False once the file was removed or renamed, even if another one has the name by now.
bool IsNameOf(int descriptor, const std::string& name) {
  struct stat file, named;
  return fstat(descriptor, &file) == 0 && lstat(name.c_str(), &named) == 0 &&
         file.st_ino == named.st_ino && file.st_dev == named.st_dev;
}

void RemoveUnlessLocked(const std::string& name) {
  const int descriptor = open(name.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return;
  if (Lock(descriptor) && IsNameOf(descriptor, name)) unlink(name.c_str());
  close(descriptor);
}

// What a writer left that was killed. (The iterators of std::filesystem end the process where
// memory is out.)
void RemoveLeftovers(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), &closedir);
  if (entries == nullptr) return;
  while (const dirent* entry = readdir(entries.get())) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(kNameStart) || !name.ends_with(kNameEnd)) continue;
    RemoveUnlessLocked(folder + "/" + entry->d_name);
  }
}

// False where there are not two files, or the file system cannot do it.
bool Exchange(const std::string& a, const std::string& b) {
#ifdef RENAME_EXCHANGE
  return renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
#else
  errno = EINVAL;
  return false;
#endif
}

}  // namespace

TemporaryFile::TemporaryFile(std::string folder) : fFolder(std::move(folder)) {
  RemoveLeftovers(fFolder);
  OpenUnnamed();
  if (fDescriptor < 0) OpenNamed();
}

TemporaryFile::~TemporaryFile() {
  if (!fName.empty()) unlink(fName.c_str());
  ForgetName();
  if (fDescriptor >= 0) close(fDescriptor);
}

std::string TemporaryFile::DescriptorPath() const {
  return "/proc/self/fd/" + std::to_string(fDescriptor);
}

void TemporaryFile::OpenUnnamed() {
#ifdef O_TMPFILE
  fDescriptor = open(fFolder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kPermissions);
  if (fDescriptor < 0) return;
  // Without this path it could be neither named nor opened again.
  if (access(DescriptorPath().c_str(), F_OK) == 0) {
    (void)Lock(fDescriptor);
  } else {
    close(std::exchange(fDescriptor, -1));
  }
#endif
}

void TemporaryFile::OpenNamed() {
  while (true) {
    std::string name = NewName(fFolder);
    fDescriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPermissions);
    if (fDescriptor < 0 && errno == EEXIST) continue;
    if (fDescriptor < 0) return;
    // Where files cannot be locked, nobody takes them for left over either.
    const bool isLocked = Lock(fDescriptor) || errno != EWOULDBLOCK;
    if (isLocked && IsNameOf(fDescriptor, name)) return TakeName(std::move(name));
    close(fDescriptor);  // taken for left over before it was locked
  }
}

void TemporaryFile::SetPermissions(mode_t mode) const {
  // A file system without permissions is no reason not to write.
  (void)!fchmod(fDescriptor, mode);
}

bool TemporaryFile::GiveName() {
  while (true) {
    // Known first: a program that is ended in between leaves nothing.
    const std::string from = DescriptorPath();
    TakeName(NewName(fFolder));
    if (linkat(AT_FDCWD, from.c_str(), AT_FDCWD, fName.c_str(), AT_SYMLINK_FOLLOW) == 0)
      return true;
    const int error = errno;
    ForgetName();
    errno = error;
    if (errno != EEXIST) return false;
  }
}

void TemporaryFile::TakeName(std::string name) {
  fName = std::move(name);
  fSlot = RegisterUnfinished(fName.c_str());
}

void TemporaryFile::ForgetName() {
  ForgetUnfinished(std::exchange(fSlot, -1));
  fName.clear();
}

int TemporaryFile::Settle() {
  while (fsync(fDescriptor) != 0) {
    if (errno == EINVAL || errno == ENOTSUP) break;  // there is nothing behind the file
    if (errno != EINTR) return errno;
  }
  // Closing tells of writes that failed late; the file itself stays open, for its lock.
  const int copy = dup(fDescriptor);
  if (copy < 0 || (close(copy) != 0 && errno != EINTR)) return errno;
  return fName.empty() && !GiveName() ? errno : 0;
}

int TemporaryFile::TakePlaceOf(const std::string& target, bool mayReturn) {
  fLeft = Left::kNothing;
  if (mayReturn) {
    if (Exchange(fName, target)) {
      fLeft = Left::kOldFile;
      return 0;
    }
    if (errno == ENOENT) fLeft = Left::kNoFile;
  }
  if (std::rename(fName.c_str(), target.c_str()) != 0) return errno;
  if (!mayReturn) ForgetName();
  return 0;
}

void TemporaryFile::GiveBack(const std::string& target) {
  if (fLeft == Left::kOldFile) (void)Exchange(target, fName);
  if (fLeft == Left::kNoFile) (void)!std::rename(target.c_str(), fName.c_str());
}

}  // namespace MCHost
