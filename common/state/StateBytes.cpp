#include "common/state/StateBytes.h"

#include <sstream>

namespace StateBytes {

namespace {

// The streams of saved state are those of files; only their buffer makes them so.
void Join(std::fstream& stream, std::stringbuf& buffer) {
  static_cast<std::ios&>(stream).rdbuf(&buffer);
}

}  // namespace

std::string Written(const std::function<void(std::fstream&)>& write) {
  std::stringbuf buffer(std::ios::out | std::ios::binary);
  std::fstream stream;
  Join(stream, buffer);
  write(stream);
  return std::move(buffer).str();
}

bool Read(const std::string& bytes, const std::function<void(std::fstream&)>& read) {
  std::stringbuf buffer(bytes, std::ios::in | std::ios::binary);
  std::fstream stream;
  Join(stream, buffer);
  read(stream);
  return stream.good() && stream.peek() == std::fstream::traits_type::eof();
}

std::uint64_t Digest(std::string_view bytes, std::uint64_t before) {
  for (const char byte : bytes) {
    before = (before ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
  }
  return before;
}

}  // namespace StateBytes
