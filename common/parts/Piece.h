// Bytes that travel between the parts of a table and whoever brings them together: what they are,
// of which request they come, and a checksum, around a content.
//
//   "PSPIECE1", kind (4 bytes), digest of the request (8), length of the content (8), the content,
//   FNV-1a digest of all that (8); numbers in the machine's byte order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct Piece {
  // Do not renumber.
  enum Kind : std::int32_t {
    kRanges = 1,       // TableRanges; of no request
    kRequest = 2,      // PartRequest; of no request
    kCounts = 3,       // UAPartCounts
    kNaiveCounts = 4,  // NBPartCounts
    kCodes = 5,        // NBPartCodes: the cases of one part, which is not merged with others
    kSums = 6,         // NBPartSums
    kClassified = 7    // NBPartClassified: sums of a scoring pass
  };

  Kind fKind = kRanges;
  std::uint64_t fOf = 0;  // the digest of the request, 0 for none
  std::string fContent;

  std::string Bytes() const;
  // Empty, or why the bytes are no piece.
  [[nodiscard]] std::string Read(std::string_view bytes);

  // "ranges", "an answer with counts", ...
  static const char* NameOf(Kind kind);
};
