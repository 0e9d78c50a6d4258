#include "host/cases/UAUniformRandom.h"

// 27 and 26 bits make one double (genrand_res53 of Matsumoto and Nishimura, 2002).
double UAUniformRandom::GetRandom() {
  const auto high = static_cast<double>(fEngine() >> 5);
  const auto low = static_cast<double>(fEngine() >> 6);
  return (high * 67108864.0 + low) / 9007199254740992.0;
}
