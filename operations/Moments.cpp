#include "operations/Moments.h"

#include <algorithm>
#include <cmath>

namespace PredSelect {

double Moments::Mean() const { return (fFirst + fMean) / fScale; }

double Moments::Deviation() const { return std::sqrt(fSquares / (fN - 1.0)) / fScale; }

void Moments::Rescale(double value) {
  constexpr int kMost = 1000;  // of the least numbers the reciprocal is none
  const int size = std::ilogb(std::max(std::fabs(value), std::fabs(fFirst / fScale)));
  const double scale = std::ldexp(1.0, std::clamp(-size, -kMost, kMost));
  const double ratio = scale / fScale;
  fFirst *= ratio;
  fMean *= ratio;
  fSquares = fSquares * ratio * ratio;
  fScale = scale;
}

}  // namespace PredSelect
