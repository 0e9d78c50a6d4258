// Numbers as most files spell them, read without a look at each digit: a minus sign or none, at
// most 16 characters of digits, and at most one point among them.
//
// Their digits are a whole number below 2^53 and the places behind the point a power of ten that a
// double holds, so one division rounds to what every careful reader finds. Any other text is left
// to such a reader, numbers among it.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace MCHost {

namespace ShortDecimals {

constexpr std::size_t kLongest = 16;  // without the sign
constexpr std::uint64_t kOnes = 0x0101010101010101;
constexpr std::uint64_t kZeros = kOnes * '0';
constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
constexpr std::array<double, kLongest> kPowers = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

// Eight characters, the first in the lowest byte.
inline std::uint64_t EightAt(const char* at) {
  std::uint64_t eight = 0;
  std::memcpy(&eight, at, sizeof(eight));
  return eight;
}

// The highest bit of each byte that is `c`, and no other.
inline std::uint64_t BytesThatAre(char c, std::uint64_t eight) {
  const std::uint64_t other = eight ^ (kOnes * static_cast<unsigned char>(c));
  constexpr std::uint64_t kLow = kOnes * 0x7F;
  return ~(((other & kLow) + kLow) | other | kLow);
}

inline bool AreDigits(std::uint64_t eight) {
  constexpr std::uint64_t kHigh = kOnes * 0xF0;
  return ((eight & kHigh) | (((eight + kOnes * 0x06) & kHigh) >> 4)) == kOnes * 0x33;
}

inline std::uint64_t NumberOf(std::uint64_t digits) {
  digits -= kZeros;
  digits = digits * 10 + (digits >> 8);  // of two, in every other byte
  constexpr std::uint64_t kPairs = 0x000000FF000000FF;
  constexpr std::uint64_t kFirst = 100 + (std::uint64_t{1000000} << 32);
  constexpr std::uint64_t kSecond = 1 + (std::uint64_t{10000} << 32);
  return ((digits & kPairs) * kFirst + (digits >> 16 & kPairs) * kSecond) >> 32;
}

// Zeros before the last n characters. REQUIRES: n from 1 to 8.
inline std::uint64_t LedByZeros(std::uint64_t eight, std::size_t n) {
  return eight | (kZeros & ((std::uint64_t{1} << (8 * (8 - n))) - 1));
}

// Takes one of the characters out, whose highest bit is given, and moves those before it on; gives
// how many stand behind it.
inline std::size_t TakeOut(std::uint64_t bit, std::uint64_t& eight) {
  const std::uint64_t below = (bit >> 7) - 1;
  const std::uint64_t above = ~(below << 8 | 0xFF);
  eight = (eight & above) | (eight & below) << 8;
  return 7 - static_cast<std::size_t>(std::countr_zero(bit)) / 8;
}

// The last eight characters of a number and those before them, behind bytes that are zero.
struct Characters {
  std::uint64_t fFirst = 0;
  std::uint64_t fLast = 0;
  std::size_t fSize;

  Characters(const char* at, std::size_t size) : fSize(size) {
    if (size <= 8) {
      fLast = EightAt(at) << (8 * (8 - size));
    } else {
      fLast = EightAt(at + size - 8);
      fFirst = EightAt(at) << (8 * (16 - size));
    }
  }

  // Takes the points out and gives how many characters stand behind the last; others may be left,
  // which are no digits.
  std::size_t TakeOutPoint(char point) {
    if (const std::uint64_t points = BytesThatAre(point, fLast)) {
      const std::size_t behind = TakeOut(std::bit_floor(points), fLast);
      fLast |= fFirst >> 56;
      fFirst <<= 8;
      --fSize;
      return behind;
    }
    const std::uint64_t points = BytesThatAre(point, fFirst);
    if (points == 0) return 0;
    --fSize;
    return 8 + TakeOut(std::bit_floor(points), fFirst);
  }

  // False where they are not all digits, or too many.
  bool Read(std::uint64_t& number) const {
    if (fSize == 0) return false;
    const std::uint64_t last = fSize < 8 ? LedByZeros(fLast, fSize) : fLast;
    if (!AreDigits(last)) return false;
    number = NumberOf(last);
    if (fSize <= 8) return true;
    const std::uint64_t first = LedByZeros(fFirst, fSize - 8);
    number += NumberOf(first) * 100000000;
    return AreDigits(first) && number < kExact;
  }
};

}  // namespace ShortDecimals

// False where the text is not of that form. REQUIRES: 8 bytes can be read wherever the text begins
// or goes on.
inline bool ReadShortDecimal(const char* at, std::size_t size, char point, double& value) {
  using namespace ShortDecimals;
  if constexpr (std::endian::native != std::endian::little) return false;
  const bool isNegative = *at == '-';
  at += isNegative ? 1 : 0;
  size -= isNegative ? 1 : 0;
  if (size == 0 || size > kLongest) return false;
  Characters characters(at, size);
  const std::size_t places = characters.TakeOutPoint(point);
  std::uint64_t number = 0;
  if (!characters.Read(number)) return false;
  const double bare = static_cast<double>(static_cast<std::int64_t>(number)) / kPowers[places];
  // No branch: signs come as they like.
  const std::uint64_t sign = std::uint64_t{isNegative} << 63;
  value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(bare) | sign);
  return true;
}

}  // namespace MCHost
