#include "host/data/DecimalCells.h"

#include <array>
#include <charconv>
#include <limits>

namespace MCHost {

namespace {

constexpr std::size_t kMostWords = 4;
using Words = std::array<std::uint64_t, kMostWords>;  // of a number without its sign, lowest first

constexpr std::size_t kDigitsAtATime = 19;  // that 64 bits hold
constexpr std::uint64_t kTen19 = 10000000000000000000U;

// Leaves what there is of 10^19 in a number and gives the rest.
std::uint64_t TakeDigits(Words& words) {
  __extension__ using Wide = unsigned __int128;
  std::uint64_t rest = 0;
  for (std::size_t left = words.size(); left > 0; --left) {
    const Wide whole = static_cast<Wide>(rest) << 64 | words[left - 1];
    words[left - 1] = static_cast<std::uint64_t>(whole / kTen19);
    rest = static_cast<std::uint64_t>(whole % kTen19);
  }
  return rest;
}

// By its digits: any other way rounds more than once.
double NearestByDigits(Words words, int places) {
  constexpr std::size_t kMostDigits = 5 * kDigitsAtATime;
  std::array<char, kMostDigits + 8> text;
  char* end = text.data() + kMostDigits;
  char* start = end;
  do {
    std::uint64_t digits = TakeDigits(words);
    for (std::size_t i = 0; i < kDigitsAtATime; ++i, digits /= 10) {
      *--start = static_cast<char>('0' + digits % 10);
    }
  } while (words != Words{});
  *end++ = 'e';
  end = std::to_chars(end, text.data() + text.size(), -places).ptr;
  double value = std::numeric_limits<double>::infinity();
  std::from_chars(start, end, value);
  return value;
}

double NearestOf(const Words& words, int places) {
  // Whole numbers and powers of ten that doubles hold give a quotient that is rounded once.
  static constexpr std::array<double, 23> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
  const bool isSmall = words[0] <= kExactIntegers && (words[1] | words[2] | words[3]) == 0;
  if (!isSmall || places < 0 || places >= static_cast<int>(kPowers.size())) {
    return NearestByDigits(words, places);
  }
  return static_cast<double>(words[0]) / kPowers[static_cast<std::size_t>(places)];
}

// Cells of `kWords` pieces, the highest of which has the sign.
template <class Word, std::size_t kWords>
void ReadDecimals(const void* data, std::int64_t at, std::size_t n, int places, double* values) {
  const auto* cells = static_cast<const Word*>(data) + at * static_cast<std::int64_t>(kWords);
  for (std::size_t i = 0; i < n; ++i, cells += kWords) {
    const bool isNegative = cells[kWords - 1] < 0;
    Words words{};
    bool carry = isNegative;
    for (std::size_t k = 0; k < kWords; ++k) {
      const auto word = static_cast<std::uint64_t>(static_cast<std::int64_t>(cells[k]));
      words[k] = isNegative ? ~word + (carry ? 1 : 0) : word;
      carry = carry && words[k] == 0;
    }
    const double value = NearestOf(words, places);
    values[i] = isNegative ? -value : value;
  }
}

}  // namespace

DecimalReader DecimalReaderOf(int bits) {
  switch (bits) {
    case 32:
      return ReadDecimals<std::int32_t, 1>;
    case 64:
      return ReadDecimals<std::int64_t, 1>;
    case 128:
      return ReadDecimals<std::int64_t, 2>;
    case 256:
      return ReadDecimals<std::int64_t, 4>;
    default:
      return nullptr;
  }
}

}  // namespace MCHost
