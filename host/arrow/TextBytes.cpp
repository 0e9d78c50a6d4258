#include "host/arrow/TextBytes.h"

#include <arrow/buffer.h>
#include <arrow/io/compressed.h>
#include <arrow/io/file.h>
#include <arrow/io/memory.h>
#include <arrow/util/compression.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/Utf8Stream.h"
#include "host/arrow/XzStream.h"

namespace MCHost {

namespace {

struct Packing {
  std::string_view fStart;  // how a file begins that is packed so
  arrow::Compression::type fType;
};

constexpr std::string_view kXzStart{
    "\xFD"
    "7zXZ\0",
    6};
constexpr Packing kPackings[] = {{"\x1F\x8B", arrow::Compression::GZIP},
                                 {"\x28\xB5\x2F\xFD", arrow::Compression::ZSTD},
                                 {"BZh", arrow::Compression::BZ2},
                                 {"\x04\x22\x4D\x18", arrow::Compression::LZ4_FRAME}};

// "BZh" begins words, too: a level and the sign of a block or of the end stand behind it.
bool IsBzip2(std::string_view start) {
  constexpr std::string_view kBlock = "\x31\x41\x59\x26\x53\x59";
  constexpr std::string_view kEnd = "\x17\x72\x45\x38\x50\x90";
  const std::string_view sign = start.substr(std::min<std::size_t>(start.size(), 4));
  return sign == kBlock || sign == kEnd;
}

}  // namespace

TextBytes::TextBytes(std::string path, std::string name)
    : fName(name.empty() ? path : std::move(name)), fPath(std::move(path)), fStamp(fPath) {}

TextBytes TextBytes::Of(std::string name, std::string text) {
  TextBytes bytes("", std::move(name));
  bytes.fpText = std::make_shared<const std::string>(std::move(text));
  return bytes;
}

std::shared_ptr<arrow::io::InputStream> TextBytes::Open() const {
  auto bytes = Unpacked();
  if (fEncoding == TextEncoding::kUtf8) return bytes;
  return std::make_shared<Utf8Stream>(std::move(bytes), fEncoding);
}

std::string TextBytes::Start(std::size_t size) const {
  std::string start(size, '\0');
  const auto wanted = static_cast<std::int64_t>(size);
  std::int64_t done = 0;
  const auto bytes = Unpacked();
  while (done < wanted) {
    const std::int64_t n = Value(bytes->Read(wanted - done, start.data() + done), fName);
    if (n == 0) break;
    done += n;
  }
  start.resize(static_cast<std::size_t>(done));
  return start;
}

std::shared_ptr<arrow::io::InputStream> TextBytes::Unpacked() const {
  constexpr std::int64_t kStart = 10;
  std::shared_ptr<arrow::io::RandomAccessFile> raw;
  if (fpText != nullptr) {
    const auto size = static_cast<std::int64_t>(fpText->size());
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(fpText->data());
    raw = std::make_shared<arrow::io::BufferReader>(std::make_shared<arrow::Buffer>(bytes, size));
  } else {
    fStamp.Check(fName);
    raw = Value(arrow::io::ReadableFile::Open(fPath), fName);
  }
  const auto buffer = Value(raw->Read(kStart), fName);
  const std::string_view start(*buffer);
  Check(raw->Seek(0), fName);
  fbPacked = true;
  if (start.starts_with(kXzStart)) return std::make_shared<XzStream>(raw);
  for (const Packing& packing : kPackings) {
    if (!start.starts_with(packing.fStart)) continue;
    if (packing.fType == arrow::Compression::BZ2 && !IsBzip2(start)) continue;
    const auto codec = Value(arrow::util::Codec::Create(packing.fType), fName);
    return Value(arrow::io::CompressedInputStream::Make(codec.get(), raw), fName);
  }
  fbPacked = false;
  return raw;
}

}  // namespace MCHost
