// A file that appears whole or not at all.
//
// Output goes to a temporary file beside the target; Commit() puts it in the target's place in one
// step. Without a commit the temporary file is removed and the target stays as it was. A target
// that is not a plain file (a device, a pipe) is written directly.
#pragma once

#include <functional>
#include <string>

namespace MCHost {

class OutputFile {
 public:
  // Makes the temporary file, with the permissions of the file that it will replace; a symbolic
  // link is followed. Throws HostIOError, naming the target, where it cannot be made.
  explicit OutputFile(std::string target);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  const std::string& Target() const { return fTarget; }

  // The file to write to: by Write(), or by whatever opens files by name.
  const std::string& WritePath() const { return fbDirect ? fTarget : fTemporary; }

  // Appends bytes to the temporary file. Throws HostIOError on a short write.
  void Write(const char* data, std::size_t size);
  void Write(const std::string& text) { Write(text.data(), text.size()); }

  // Closes the file and renames it to the target. Throws HostIOError; the target is then untouched.
  // REQUIRES: not committed yet.
  void Commit();

 private:
  [[noreturn]] void Fail(int error);
  void OpenDirectly();
  void OpenTemporary();

  std::string fTarget;
  std::string fFinal;      // the target behind symbolic links
  std::string fTemporary;  // empty when there is none (any more)
  bool fbDirect = false;
  int fDescriptor = -1;
  int fSlot = -1;
};

// A file that `write` makes whole, by name. It returns empty, or what went wrong. Throws
// HostIOError, naming the target.
void WriteWhole(const std::string& target,
                const std::function<std::string(const std::string& path)>& write);

// Removes the temporary file of every OutputFile that is alive. For a program that is about to end
// without unwinding: may be called from a signal handler or an assertion handler, on any thread.
void RemoveTemporaryFiles() noexcept;

}  // namespace MCHost
