#include "naivebayes/encoders/NBRoundEncoder.h"

#include <cmath>
#include <ostream>

#include "common/MissingValue.h"

std::pair<double, double> NBRoundEncoder::Encode(double value) const {
  if (IsMissingNumber(value)) return {MCMV::gMissingValue, value};
  double rounded = value;
  if (fRounding == INBVariable::kTruncate) rounded = std::floor(value);
  if (fRounding == INBVariable::kRound) rounded = std::floor(value + 0.5);
  return {rounded > 0 ? rounded : MCMV::gMissingValue, value};
}

std::unique_ptr<INBEncoder> NBRoundEncoder::Clone() const {
  return std::make_unique<NBRoundEncoder>(*this);
}

void NBRoundEncoder::Display(std::ostream& os) const {
  os << "Weights: " << INBVariable::GetRoundingName(fRounding) << '\n';
}
