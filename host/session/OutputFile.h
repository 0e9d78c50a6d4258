// A file that appears whole or not at all.
//
// Output goes to a temporary file beside the target; Commit() puts it in the target's place in one
// step. Without a commit the temporary file is removed and the target stays as it was. A target
// that is not a plain file (a device, a pipe) is written directly.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>

namespace MCHost {

class TemporaryFile;

class OutputFile {
 public:
  // The target that is standard output, which is written directly, and has no path.
  static constexpr const char* kStandardOutput = "-";

  // Makes the temporary file; a symbolic link is followed. Throws HostIOError, naming the target,
  // where it cannot be made.
  explicit OutputFile(std::string target);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Throws what the constructor would throw and leaves nothing: for finding before the work what
  // cannot be written after it.
  static void Check(const std::string& target);

  const std::string& Target() const { return fTarget; }

  // The file to write to: by Write(), or by whatever opens files by name.
  std::string WritePath() const;

  // Appends bytes to the file. Throws HostIOError on a short write.
  void Write(const char* data, std::size_t size);
  void Write(const std::string& text) { Write(text.data(), text.size()); }

  // Ends the file and gives it the target's place, and the permissions of the file that it
  // replaces; while an OutputGroup is open, that waits for its Commit(). Throws HostIOError; the
  // target is then untouched. REQUIRES: not committed yet.
  void Commit();

 private:
  [[noreturn]] void Fail(int error) const;

  std::string fTarget;
  std::string fFinal;                          // the target behind symbolic links
  std::unique_ptr<TemporaryFile> fpTemporary;  // null for a target that is written directly
  int fDescriptor = -1;  // of the temporary file, which owns it, or of the target
};

// A file that `write` makes whole, by name. It returns empty, or what went wrong. Throws
// HostIOError, naming the target.
void WriteWhole(const std::string& target,
                const std::function<std::string(const std::string& path)>& write);

// Throws HostIOError where the folder, or the nearest one above it that is there, takes no files.
void CheckOutputFolder(const std::string& folder);

}  // namespace MCHost
