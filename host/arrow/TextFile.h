// Text on its way into a file, which appears whole or not at all.
#pragma once

#include <cstddef>
#include <string>

#include "host/session/OutputFile.h"

namespace MCHost {

class TextFile {
 public:
  // Throws HostIOError, as all that writes.
  explicit TextFile(const std::string& path) : fFile(path) {}

  // Text to append to.
  std::string& Text() { return fText; }

  // Writes what there is of the text once it is worth it.
  void Pass() {
    if (fText.size() >= kPieceBytes) Flush();
  }

  void Finish() {
    Flush();
    fFile.Commit();
  }

 private:
  static constexpr std::size_t kPieceBytes = std::size_t{1} << 18;

  void Flush() {
    fFile.Write(fText);
    fText.clear();
  }

  OutputFile fFile;
  std::string fText;
};

}  // namespace MCHost
