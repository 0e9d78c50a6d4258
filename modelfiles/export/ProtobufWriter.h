// Messages in the wire format of protocol buffers: fields by their number, one behind the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace MCModelFiles {

class ProtobufWriter {
 public:
  ProtobufWriter& Int(int field, std::int64_t value);
  ProtobufWriter& Text(int field, std::string_view bytes);
  ProtobufWriter& Message(int field, const ProtobufWriter& message) {
    return Text(field, message.Bytes());
  }

  const std::string& Bytes() const { return fBytes; }

 private:
  void Varint(std::uint64_t value);

  std::string fBytes;
};

}  // namespace MCModelFiles
