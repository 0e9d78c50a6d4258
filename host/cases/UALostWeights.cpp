#include "host/cases/UALostWeights.h"

#include <algorithm>
#include <cmath>

#include "common/MissingValue.h"

void UALostWeights::Observe(const double* weights, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    const double weight = weights[i];
    if (MCMV::IsMissing(weight) || !(weight > 0.0)) continue;
    ++fNCases;
    fWeight += weight;
    fLeast = std::min(fLeast, weight);
    // The engines' own rounding, to the last bit.
    if (std::floor(weight + 0.5) > 0.0) continue;
    ++fNLost;
    fLostWeight += weight;
  }
}

void UALostWeights::Add(const UALostWeights& others) {
  fNCases += others.fNCases;
  fWeight += others.fWeight;
  fNLost += others.fNLost;
  fLostWeight += others.fLostWeight;
  fLeast = std::min(fLeast, others.fLeast);
}

double UALostWeights::GetFactor() const {
  double factor = 1.0;
  while (fLeast * factor < 1.0 && factor < 1e300) factor *= 10.0;
  return factor;
}
