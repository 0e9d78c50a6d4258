#include "host/arrow/CsvBounds.h"

#include <algorithm>
#include <array>
#include <bit>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "host/data/ReadingOptions.h"

namespace MCHost {

namespace {

constexpr std::size_t kBlock = 64;

// Of the bytes of a block, a bit each.
struct BlockBits {
  std::uint64_t fBounds = 0;
  std::uint64_t fHigh = 0;
  std::uint64_t fZero = 0;
};

#if defined(__SSE2__)

BlockBits BitsOf(const char* block, char delimiter, char quote) {
  constexpr std::size_t kVector = sizeof(__m128i);
  BlockBits bits;
  for (std::size_t at = 0; at < kBlock; at += kVector) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + at));
    const auto equal = [bytes](char c) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(c)); };
    const auto bitsOf = [at](__m128i marked) {
      return std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(marked))} << at;
    };
    const __m128i ends = _mm_or_si128(equal('\n'), equal('\r'));
    bits.fBounds |= bitsOf(_mm_or_si128(ends, _mm_or_si128(equal(delimiter), equal(quote))));
    bits.fHigh |= bitsOf(bytes);
    bits.fZero |= bitsOf(equal('\0'));
  }
  return bits;
}

#else

BlockBits BitsOf(const char* block, char delimiter, char quote) {
  BlockBits bits;
  for (std::size_t at = 0; at < kBlock; ++at) {
    const char c = block[at];
    const bool isBound = (c == delimiter) | (c == quote) | (c == '\n') | (c == '\r');
    bits.fBounds |= std::uint64_t{isBound} << at;
    bits.fHigh |= std::uint64_t{static_cast<unsigned char>(c) >= 0x80} << at;
    bits.fZero |= std::uint64_t{c == '\0'} << at;
  }
  return bits;
}

#endif

}  // namespace

void CsvBounds::Find(std::string_view text, char delimiter, char quote) {
  fCount = 0;
  std::uint64_t high = 0;
  std::uint64_t zero = 0;
  if (quote == kNoMark) quote = delimiter;
  for (std::size_t at = 0; at < text.size(); at += kBlock) {
    std::array<char, kBlock> last;
    const char* block = text.data() + at;
    if (text.size() - at < kBlock) {
      last.fill(' ');
      std::copy(block, text.data() + text.size(), last.begin());
      block = last.data();
    }
    BlockBits bits = BitsOf(block, delimiter, quote);
    if (text.size() - at < kBlock) bits.fBounds &= (std::uint64_t{1} << (text.size() - at)) - 1;
    high |= bits.fHigh;
    zero |= bits.fZero;
    Reserve(kBlock + 1);
    Add(bits.fBounds, static_cast<std::uint32_t>(at));
  }
  Reserve(1);
  fPlaces[fCount++] = static_cast<std::uint32_t>(text.size());
  fbHigh = high != 0;
  fbZero = zero != 0;
}

void CsvBounds::Reserve(std::size_t more) {
  constexpr std::size_t kFirst = std::size_t{1} << 16;
  if (fCount + more > fPlaces.size()) fPlaces.resize(std::max(2 * fPlaces.size(), kFirst));
}

void CsvBounds::Add(std::uint64_t bounds, std::uint32_t first) {
  std::uint32_t* to = fPlaces.data() + fCount;
  for (; bounds != 0; bounds &= bounds - 1) {
    *to++ = first + static_cast<std::uint32_t>(std::countr_zero(bounds));
  }
  fCount = static_cast<std::size_t>(to - fPlaces.data());
}

}  // namespace MCHost
