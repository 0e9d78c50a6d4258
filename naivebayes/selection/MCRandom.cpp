#include "naivebayes/selection/MCRandom.h"

#include <cstdint>
#include <cstdlib>

namespace MCNaiveBayes {

namespace {

std::uint32_t TwisterSeed(unsigned long seed) { return static_cast<std::uint32_t>(seed); }

}  // namespace

MCRandom::MCRandom(unsigned long seed, bool portable, bool twister, MCCommon::MCRandom* user)
    : fState(seed),
      fbPortable(portable),
      fpTwister(twister ? std::make_unique<std::mt19937>(TwisterSeed(seed)) : nullptr),
      fpUser(user) {}

double MCRandom::GetRandom() {
  if (fpUser != nullptr) return fpUser->GetRandom();
  if (!fbPortable) return std::rand() / 2147483647.0;
  if (fpTwister) return (static_cast<double>((*fpTwister)()) + 0.5) * 0x1p-32;
  // 64 bits hold the product exactly.
  constexpr std::uint64_t kModulus = 2147483647, kMultiplier = 397204094;
  fState = static_cast<unsigned long>(fState % kModulus * kMultiplier % kModulus);
  return static_cast<double>(fState) * 0x1p-31;
}

void MCRandom::SetSeed(unsigned long seed) {
  fState = seed;
  if (fpTwister) fpTwister->seed(TwisterSeed(seed));
  if (!fbPortable) std::srand(static_cast<unsigned>(seed));
}

}  // namespace MCNaiveBayes
