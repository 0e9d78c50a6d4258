// What is known of a table whose cases lie in parts: of each column its dictionary, range and
// categories, and of each part how many cases it has.
//
// Ranges are found of each part alone and merged, in any order and any tree: the result is the same
// to the last bit, since categories know the part in which they appeared first. Every part then
// counts with the same categories and bins. A plain value.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <string>
#include <vector>

#include "common/parts/ColumnRange.h"

// The cases of a part, which has a number of its own.
struct PartSize {
  std::int64_t fPart = 0;
  std::int64_t fNCases = 0;

  auto operator<=>(const PartSize&) const = default;
};

struct TableRanges {
  static constexpr std::int64_t kMostParts = std::int64_t{1} << 31;

  std::string fWeight;  // name of the weight variable; empty for none
  std::vector<ColumnRange> fColumns;
  std::vector<PartSize> fParts;  // by number

  std::int64_t CaseCount() const;
  // The number of the first case of a part, from 0; -1 for a part that is not there.
  std::int64_t FirstCaseOf(std::int64_t part) const;
  // So many cases a part has; -1 for one that is not there.
  std::int64_t CaseCountOf(std::int64_t part) const;
  // -1 for none.
  int FindColumn(const std::string& name) const;

  // Numbers the parts anew, from `first` on, in the order of their numbers.
  void Renumber(std::int64_t first);

  // Adds the ranges of other parts. Empty, or why they are not of the same table; nothing has
  // changed then.
  [[nodiscard]] std::string Merge(const TableRanges& other);

  // Says the same for the same ranges, and with almost certainty only for them.
  std::uint64_t Digest() const;

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
