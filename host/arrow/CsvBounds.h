// Where the fields and lines of a text may end, and what its bytes are like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace MCHost {

class CsvBounds {
 public:
  // Looks at a text of less than 4 GB. `quote` is kNoMark where there is none.
  void Find(std::string_view text, char delimiter, char quote);

  // Places of the delimiters, line ends (LF and CR) and quotes in the text, ascending, and its end.
  const std::uint32_t* Places() const { return fPlaces.data(); }
  std::size_t Count() const { return fCount; }

  // Whether a zero is among the bytes, and whether one is that is not of ASCII.
  bool HasZero() const { return fbZero; }
  bool HasHigh() const { return fbHigh; }

 private:
  void Reserve(std::size_t more);
  void Add(std::uint64_t bounds, std::uint32_t first);

  std::vector<std::uint32_t> fPlaces;  // with room for more
  std::size_t fCount = 0;
  bool fbZero = false;
  bool fbHigh = false;
};

}  // namespace MCHost
