#include "modelfiles/StateEnvelope.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <istream>

namespace MCModelFiles {

namespace {

// Kept for ever: a file with another form needs another version.
constexpr std::string_view kTag = "PSFILE 1.00";
constexpr std::string_view kAnyTag = "PSFILE ";
constexpr std::size_t kHeadSize = kTag.size() + sizeof(std::int32_t) + sizeof(std::int64_t);
constexpr std::size_t kDigestSize = 32;
constexpr std::string_view kStartMark = "<?predselect-state";
constexpr std::string_view kEndMark = "<?predselect-end";
// More than either instruction and what stands around it takes.
constexpr std::streamoff kMostMarked = 512;

constexpr const char* kChanged =
    "the file was changed, or cut short, after it was written: it does not fit its own checksum; "
    "take a copy, or save it again";
constexpr const char* kUnsigned =
    "it is not signed, and only files that were signed with the key are to be read";
constexpr const char* kWrongKey = "it was not signed with this key, or was changed since";

const unsigned char* BytesOf(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

// Without sodium_init, which makes ready what these do not use: random numbers, guarded memory, and
// the choice among ways to do other things. Digests and signatures take no memory and cannot fail.
std::string DigestOf(std::string_view bytes) {
  static_assert(crypto_hash_sha256_BYTES == kDigestSize);
  std::string digest(kDigestSize, '\0');
  crypto_hash_sha256(reinterpret_cast<unsigned char*>(digest.data()), BytesOf(bytes), bytes.size());
  return digest;
}

std::string SignatureOf(std::string_view bytes, const std::string& key) {
  static_assert(crypto_auth_hmacsha256_BYTES == kDigestSize);
  std::string signature(kDigestSize, '\0');
  crypto_auth_hmacsha256_state state;
  crypto_auth_hmacsha256_init(&state, BytesOf(key), key.size());
  crypto_auth_hmacsha256_update(&state, BytesOf(bytes), bytes.size());
  crypto_auth_hmacsha256_final(&state, reinterpret_cast<unsigned char*>(signature.data()));
  return signature;
}

// In a time that does not tell how much of it is right.
bool IsSame(std::string_view given, std::string_view wanted) {
  return given.size() == wanted.size() &&
         sodium_memcmp(given.data(), wanted.data(), wanted.size()) == 0;
}

std::string HexOf(std::string_view bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return text;
}

template <class T>
void Append(std::string& bytes, T value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::string HeadOf(std::size_t length, bool isSigned) {
  std::string head(kTag);
  Append(head, static_cast<std::int32_t>(isSigned));
  Append(head, static_cast<std::int64_t>(length));
  return head;
}

std::string StartOf(std::size_t length) {
  return std::string(kStartMark) + " version=\"1.00\" length=\"" + std::to_string(length) + "\"?>";
}

// Behind a document of this digest, with its signature or without.
std::string EndOf(const std::string& digest, const std::string& signature) {
  const std::string sealed = signature.empty() ? "" : " hmac-sha256=\"" + HexOf(signature) + "\"";
  return std::string(kEndMark) + " sha256=\"" + HexOf(digest) + "\"" + sealed + "?>\n";
}

// What a file says of itself, and what it should say by its bytes.
struct Claim {
  bool fbFits = false;
  std::string_view fSignature;  // in the form of the file; empty for none
  std::string fSigned;          // what the key makes of it, in the same form
};

Claim ClaimOfBinary(std::string_view file, const std::string& key) {
  Claim claim;
  for (const bool isSigned : {false, true}) {
    const std::size_t around = kHeadSize + kDigestSize * (isSigned ? 2 : 1);
    if (file.size() < around) continue;
    const std::size_t length = file.size() - around;
    if (!file.starts_with(HeadOf(length, isSigned))) continue;
    const std::string_view covered = file.substr(0, kHeadSize + length);
    claim.fbFits = IsSame(file.substr(covered.size(), kDigestSize), DigestOf(covered));
    claim.fSignature = file.substr(covered.size() + kDigestSize);
    if (!key.empty()) claim.fSigned = SignatureOf(covered, key);
  }
  return claim;
}

Claim ClaimOfXML(std::string_view file, const std::string& key) {
  Claim claim;
  const std::size_t start = file.find(kStartMark);
  const std::size_t end = file.rfind(kEndMark);
  const std::size_t from = file.find("?>", start);
  if (start >= end || end == file.npos || from >= end) return claim;
  if (!file.substr(start).starts_with(StartOf(end - from - 2))) return claim;
  const std::string_view covered = file.substr(0, end);
  const std::string_view said = file.substr(end);
  const std::string digest = DigestOf(covered);
  const std::string plain = EndOf(digest, "");
  const std::string_view common = std::string_view(plain).substr(0, plain.size() - 3);
  // Of a signature only the form is known without the key.
  const std::size_t signedSize = EndOf(digest, std::string(kDigestSize, '\0')).size();
  claim.fbFits = said == plain || (said.starts_with(common) && said.size() == signedSize);
  if (said != plain) claim.fSignature = said;
  if (!key.empty()) claim.fSigned = EndOf(digest, SignatureOf(covered, key));
  return claim;
}

std::string BytesAt(std::istream& file, std::streamoff from, std::streamoff n) {
  std::string bytes(static_cast<std::size_t>(n), '\0');
  file.seekg(from);
  file.read(bytes.data(), n);
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  file.clear();
  file.seekg(0);
  return bytes;
}

bool HasEnvelope(std::istream& file, bool xml, std::streamoff size) {
  const std::string start = BytesAt(file, 0, std::min(size, kMostMarked));
  if (!xml) return start.starts_with(kAnyTag);
  const std::streamoff last = std::min(size, kMostMarked);
  return start.find(kStartMark) != start.npos ||
         BytesAt(file, size - last, last).find(kEndMark) != start.npos;
}

std::streamoff SizeOf(std::istream& file) {
  file.seekg(0, std::ios::end);
  const std::streamoff size = file.tellg();
  file.clear();
  file.seekg(0);
  return std::max<std::streamoff>(size, 0);
}

// Whether the length that a binary file names is that which it has: before all of it is read.
bool HasNamedLength(std::istream& file, std::streamoff size) {
  const std::string head = BytesAt(file, 0, kHeadSize);
  if (head.size() < kHeadSize) return false;
  std::int64_t length = 0;
  std::memcpy(&length, head.data() + kHeadSize - sizeof length, sizeof length);
  return length >= 0 && length < size;
}

}  // namespace

std::string PutIntoEnvelope(std::string_view content, bool xml, const std::string& key) {
  if (!xml) {
    std::string file = HeadOf(content.size(), !key.empty()).append(content);
    const std::string_view covered = file;
    const std::string signature = key.empty() ? "" : SignatureOf(covered, key);
    return file.append(DigestOf(covered)).append(signature);
  }
  const std::size_t declared = content.find("?>") + 2;
  std::string file(content.substr(0, declared));
  file.append("\n").append(StartOf(content.size() - declared)).append(content.substr(declared));
  const std::string signature = key.empty() ? "" : SignatureOf(file, key);
  return file.append(EndOf(DigestOf(file), signature));
}

OpenedEnvelope OpenEnvelope(std::istream& file, bool xml, const std::string& key) {
  OpenedEnvelope opened;
  const std::streamoff size = SizeOf(file);
  opened.fbThere = HasEnvelope(file, xml, size);
  if (!opened.fbThere) {
    if (!key.empty()) opened.fTrouble = kUnsigned;
    return opened;
  }
  if (!xml && !HasNamedLength(file, size)) {
    opened.fTrouble = kChanged;
    return opened;
  }
  opened.fContent = BytesAt(file, 0, size);
  const Claim claim = xml ? ClaimOfXML(opened.fContent, key) : ClaimOfBinary(opened.fContent, key);
  if (!claim.fbFits) {
    opened.fTrouble = kChanged;
  } else if (!key.empty() && claim.fSignature.empty()) {
    opened.fTrouble = kUnsigned;
  } else if (!key.empty() && !IsSame(claim.fSignature, claim.fSigned)) {
    opened.fTrouble = kWrongKey;
  }
  if (xml || !opened.fTrouble.empty()) return opened;
  opened.fStart = kHeadSize;
  opened.fContent.resize(opened.fContent.size() - kDigestSize * (claim.fSignature.empty() ? 1 : 2));
  opened.fContent.erase(0, kHeadSize);
  return opened;
}

}  // namespace MCModelFiles
