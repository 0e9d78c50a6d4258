// Saved state as bytes in memory, in the binary form of files.
#pragma once

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

#include "common/state/IOException.h"
#include "common/state/QuietReading.h"

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

// False for bytes that are not those of one such object. Nothing goes to standard error.
template <class T>
[[nodiscard]] bool To(const std::string& bytes, T& object) {
  try {
    const QuietReading quiet;
    return Read(bytes, [&object](std::fstream& is) { object.ReadObject(is); });
  } catch (const MCCommon::IOException&) {
    return false;
  }
}

}  // namespace StateBytes
