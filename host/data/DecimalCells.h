// Cells of decimals as the doubles nearest to them.
//
// A decimal is a whole number of 32 to 256 bits in two's complement, the lowest byte first, and ten
// to the power of the places behind its point that it is divided by.
#pragma once

#include <cstddef>
#include <cstdint>

namespace MCHost {

// Reads n cells from raw index `at` of a data buffer. Without a place, or with less (zeros before
// the point), too.
using DecimalReader = void (*)(const void* data, std::int64_t at, std::size_t n, int places,
                               double* values);

// For cells of so many bits; null where there are none.
DecimalReader DecimalReaderOf(int bits);

}  // namespace MCHost
