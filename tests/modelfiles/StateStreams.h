// Saved state in memory: streams of the types that saving and restoring take, over a string.
#pragma once

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

template <class Stream>
class InMemory : public Stream {
 public:
  explicit InMemory(const std::string& content = {}) : fBuffer(content) {
    static_cast<std::ios&>(*this).rdbuf(&fBuffer);
    this->clear();
  }
  std::string Content() const { return fBuffer.str(); }

 private:
  std::stringbuf fBuffer;
};

using BinaryStream = InMemory<std::fstream>;
using XMLStream = InMemory<std::ifstream>;

// Keeps what is written to standard error while it lives.
class QuietErrors {
 public:
  QuietErrors() : fpBefore(std::cerr.rdbuf(fText.rdbuf())) {}
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;
  ~QuietErrors() { std::cerr.rdbuf(fpBefore); }
  std::string Text() const { return fText.str(); }

 private:
  std::ostringstream fText;
  std::streambuf* fpBefore;
};
