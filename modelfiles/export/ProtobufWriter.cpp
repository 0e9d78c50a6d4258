#include "modelfiles/export/ProtobufWriter.h"

namespace MCModelFiles {

namespace {

constexpr std::uint64_t kVarint = 0;
constexpr std::uint64_t kLengthDelimited = 2;

std::uint64_t Tag(int field, std::uint64_t kind) {
  return static_cast<std::uint64_t>(field) << 3U | kind;
}

}  // namespace

void ProtobufWriter::Varint(std::uint64_t value) {
  for (; value >= 0x80; value >>= 7U) fBytes += static_cast<char>((value & 0x7FU) | 0x80U);
  fBytes += static_cast<char>(value);
}

ProtobufWriter& ProtobufWriter::Int(int field, std::int64_t value) {
  Varint(Tag(field, kVarint));
  Varint(static_cast<std::uint64_t>(value));
  return *this;
}

ProtobufWriter& ProtobufWriter::Text(int field, std::string_view bytes) {
  Varint(Tag(field, kLengthDelimited));
  Varint(bytes.size());
  fBytes += bytes;
  return *this;
}

}  // namespace MCModelFiles
