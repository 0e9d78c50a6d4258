// Files for saved state under test, and the messages that reading it gives.
#pragma once

#include <sstream>
#include <string>

// The content of a file of this test's own, read and written through the streams that saved state
// asks for.
class ScratchFile {
 public:
  ScratchFile();
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  void Write(const std::string& content) const;
  std::string Read() const;
  const std::string& Path() const { return fPath; }

 private:
  std::string fPath;
};

// Keeps standard error from the log of a test that provokes many messages; the text is here.
class QuietErrors {
 public:
  QuietErrors();
  ~QuietErrors();
  std::string Text() const { return fText.str(); }

 private:
  std::ostringstream fText;
  std::streambuf* fpBefore;
};
