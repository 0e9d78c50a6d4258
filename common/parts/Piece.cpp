#include "common/parts/Piece.h"

#include <cstring>

#include "common/state/StateBytes.h"

namespace {

constexpr std::string_view kTag = "PSPIECE1";
constexpr std::size_t kHead = 8 + 4 + 8 + 8;
constexpr std::size_t kFrame = kHead + 8;

template <class T>
void Append(std::string& bytes, T value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <class T>
T At(std::string_view bytes, std::size_t place) {
  T value;
  std::memcpy(&value, bytes.data() + place, sizeof value);
  return value;
}

}  // namespace

const char* Piece::NameOf(Kind kind) {
  constexpr const char* kNames[] = {"ranges",
                                    "a request",
                                    "an answer with counts",
                                    "an answer with a model's counts",
                                    "the codes of a part",
                                    "an answer with sums",
                                    "an answer with classified cases"};
  return kNames[kind - kRanges];
}

std::string Piece::Bytes() const {
  std::string bytes(kTag);
  bytes.reserve(fContent.size() + kFrame);
  Append(bytes, static_cast<std::int32_t>(fKind));
  Append(bytes, fOf);
  Append(bytes, static_cast<std::uint64_t>(fContent.size()));
  bytes += fContent;
  Append(bytes, StateBytes::Digest(bytes));
  return bytes;
}

std::string Piece::Read(std::string_view bytes) {
  if (bytes.size() < kFrame || !bytes.starts_with(kTag))
    return "it is no piece of a run over parts";
  const auto kind = At<std::int32_t>(bytes, 8);
  const auto size = At<std::uint64_t>(bytes, 20);
  const std::string_view signedBytes = bytes.substr(0, bytes.size() - 8);
  const bool isWhole =
      size == bytes.size() - kFrame && kind >= kRanges && kind <= kClassified &&
      StateBytes::Digest(signedBytes) == At<std::uint64_t>(bytes, bytes.size() - 8);
  if (!isWhole) return "it is damaged or cut short";
  fKind = static_cast<Kind>(kind);
  fOf = At<std::uint64_t>(bytes, 12);
  fContent = bytes.substr(kHead, size);
  return "";
}
