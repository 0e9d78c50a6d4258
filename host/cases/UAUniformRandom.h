// The host's uniform generator: the Mersenne Twister with 53 random bits a draw. The same seed
// gives the same draws on every machine.
#pragma once

#include <cstdint>
#include <random>

#include "common/MCRandom.h"

class UAUniformRandom : public MCCommon::MCRandom {
 public:
  static constexpr std::uint32_t kDefaultSeed = 5489;

  explicit UAUniformRandom(std::uint32_t seed = kDefaultSeed) : fEngine(seed) {}

  double GetRandom() override;

 private:
  std::mt19937 fEngine;
};
