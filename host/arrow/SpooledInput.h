// What can be read only once (standard input, a pipe) put by, so that it can be read like a file.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace MCHost {

class SpooledInput {
 public:
  static constexpr char kPlace[] = "/proc/self/fd/";  // how the path of such a file begins
  static constexpr std::size_t kMostHeld = std::size_t{16} << 20;

  // Reads the descriptor to its end. Up to `mostHeld` bytes stay in memory; more of them, or any if
  // that is 0, go into a file without a name in the system's folder for temporary files, which goes
  // with the process. `name` is what messages call the input. Throws HostIOError.
  SpooledInput(int descriptor, std::string name, std::size_t mostHeld = kMostHeld);

  const std::string& Name() const { return fName; }
  // Where it can be read; empty where it is held in memory.
  const std::string& Path() const { return fPath; }
  // The bytes in memory, which are the caller's from then on.
  std::string TakeText() { return std::move(fText); }

 private:
  void OpenFile();
  void Write(const char* bytes, std::size_t size);
  [[noreturn]] void Fail(const std::string& file, const char* what) const;

  std::string fName;
  std::string fText;
  std::string fPath;
  std::string fFolder;
  int fFile = -1;
};

}  // namespace MCHost
