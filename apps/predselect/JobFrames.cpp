#include "apps/predselect/JobFrames.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace PredSelectApp {

namespace {

bool ReadAll(int pipe, char* bytes, std::size_t n) {
  while (n > 0) {
    const ssize_t got = read(pipe, bytes, n);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes += got;
    n -= static_cast<std::size_t>(got);
  }
  return true;
}

bool WriteAll(int pipe, const char* bytes, std::size_t n) {
  while (n > 0) {
    const ssize_t put = write(pipe, bytes, n);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return false;
    bytes += put;
    n -= static_cast<std::size_t>(put);
  }
  return true;
}

}  // namespace

std::optional<JobFrame> ReadFrame(int pipe) {
  char kind = 0;
  std::uint64_t size = 0;
  if (!ReadAll(pipe, &kind, 1)) return {};
  if (!ReadAll(pipe, reinterpret_cast<char*>(&size), sizeof size)) return {};
  JobFrame frame{static_cast<JobFrame::Kind>(kind), std::string(size, '\0')};
  if (!ReadAll(pipe, frame.fBytes.data(), size)) return {};
  return frame;
}

bool WriteFrame(int pipe, const JobFrame& frame) {
  const std::uint64_t size = frame.fBytes.size();
  const char kind = frame.fKind;
  return WriteAll(pipe, &kind, 1) &&
         WriteAll(pipe, reinterpret_cast<const char*>(&size), sizeof size) &&
         WriteAll(pipe, frame.fBytes.data(), frame.fBytes.size());
}

std::string PackTexts(const std::vector<std::string>& texts) {
  std::string bytes;
  for (const std::string& text : texts) {
    const std::uint64_t size = text.size();
    bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    bytes += text;
  }
  return bytes;
}

std::vector<std::string> UnpackTexts(const std::string& bytes) {
  std::vector<std::string> texts;
  std::uint64_t size = 0;
  for (std::size_t at = 0; at + sizeof size <= bytes.size(); at += size) {
    std::memcpy(&size, bytes.data() + at, sizeof size);
    at += sizeof size;
    size = std::min<std::uint64_t>(size, bytes.size() - at);
    texts.push_back(bytes.substr(at, size));
  }
  return texts;
}

}  // namespace PredSelectApp
