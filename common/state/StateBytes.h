// Saved state as bytes in memory, in the binary form of files.
#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace StateBytes {

// What `write` puts into the stream that it is given.
std::string Written(const std::function<void(std::fstream&)>& write);

// Lets `read` read the bytes from a stream. False where some are left.
bool Read(const std::string& bytes, const std::function<void(std::fstream&)>& read);

// FNV-1a. `before`: the digest of what came before, to go on from.
std::uint64_t Digest(std::string_view bytes, std::uint64_t before = 0xcbf29ce484222325);

template <class T>
std::string Of(const T& object) {
  return Written([&object](std::fstream& os) { object.WriteObject(os); });
}

// Throws IOException for bytes that are not those of one such object.
template <class T>
bool To(const std::string& bytes, T& object) {
  return Read(bytes, [&object](std::fstream& is) { object.ReadObject(is); });
}

}  // namespace StateBytes
