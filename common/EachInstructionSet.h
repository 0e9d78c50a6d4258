// Compiles loops once for every instruction set: includes the header that INSTRUCTION_SET_LOOPS
// names in the namespaces Baseline, AVX2 and AVX512 (MCCommon::InstructionSet), in each with
// kWide, how many doubles a vector holds, and common/VectorOfSet.h, its functions for these
// instructions. To be included
// by one source, in a namespace without a name, which gives the loops out by OfInstructionSet.
//
// That header may call nothing that is not inline, and includes nothing: what it needs comes
// before. Lanes, not vectors, decide about bits, and no product is contracted with a sum.
//
// Meant to be included more than once, so there is no guard.

namespace Baseline {
constexpr std::size_t kWide = 2;
#include "common/VectorOfSet.h"
#include INSTRUCTION_SET_LOOPS
}  // namespace Baseline

#if defined(__x86_64__)

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif
namespace AVX2 {
constexpr std::size_t kWide = 4;
#include "common/VectorOfSet.h"
#include INSTRUCTION_SET_LOOPS
}  // namespace AVX2
#if defined(__clang__)
#pragma clang attribute pop
#pragma clang attribute push( \
    __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl"))), apply_to = function)
#else
#pragma GCC pop_options
#pragma GCC push_options
#pragma GCC target("avx512f,avx512dq,avx512bw,avx512vl")
#endif
namespace AVX512 {
constexpr std::size_t kWide = 8;
#include "common/VectorOfSet.h"
#include INSTRUCTION_SET_LOOPS
}  // namespace AVX512
#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

#else
namespace AVX2 = Baseline;
namespace AVX512 = Baseline;
#endif

// The one of the three for the instructions in use.
template <class Loops>
const Loops& OfInstructionSet(const Loops& baseline, const Loops& avx2, const Loops& avx512) {
  switch (MCCommon::InstructionSetInUse()) {
    case MCCommon::InstructionSet::kAVX512:
      return avx512;
    case MCCommon::InstructionSet::kAVX2:
      return avx2;
    default:
      return baseline;
  }
}
